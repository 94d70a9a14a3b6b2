#include "BreltWidgetToolKit/breltdoublespinbox.h"

#include "BreltWidgetToolKit/breltinputwatch.h"
#include "BreltWidgetToolKit/breltreturnkey.h"

#include <QWheelEvent>

BreltDoubleSpinBox::BreltDoubleSpinBox(QWidget *parent) : BreltAmountSpinBox(parent)
{
    brelt::watchInput();
    setFocusPolicy(Qt::StrongFocus);
}

BreltDoubleSpinBox::~BreltDoubleSpinBox() = default;

void BreltDoubleSpinBox::keyPressEvent(QKeyEvent *event)
{
    if (!brelt::isReturnKey(event)) {
        BreltAmountSpinBox::keyPressEvent(event);
        return;
    }
    brelt::takeReturnKey(
        event, [this, event] { BreltAmountSpinBox::keyPressEvent(event); },
        [this] { emit signal_returnClicked(); });
}

void BreltDoubleSpinBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        BreltAmountSpinBox::wheelEvent(event);
    else
        event->ignore();
}
