#include "BreltWidgetToolKit/breltdoublespinbox.h"

#include "BreltWidgetToolKit/breltreturnkey.h"

#include <QWheelEvent>

BreltDoubleSpinBox::BreltDoubleSpinBox(QWidget *parent) : QDoubleSpinBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
}

BreltDoubleSpinBox::~BreltDoubleSpinBox() = default;

void BreltDoubleSpinBox::keyPressEvent(QKeyEvent *event)
{
    if (!brelt::isReturnKey(event)) {
        QDoubleSpinBox::keyPressEvent(event);
        return;
    }
    brelt::takeReturnKey(
        event, [this, event] { QDoubleSpinBox::keyPressEvent(event); },
        [this] { emit signal_returnClicked(); });
}

void BreltDoubleSpinBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QDoubleSpinBox::wheelEvent(event);
    else
        event->ignore();
}
