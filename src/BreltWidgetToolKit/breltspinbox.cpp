#include "BreltWidgetToolKit/breltspinbox.h"

#include "BreltWidgetToolKit/breltinputwatch.h"
#include "BreltWidgetToolKit/breltreturnkey.h"

#include <QWheelEvent>

BreltSpinBox::BreltSpinBox(QWidget *parent) : BreltCountSpinBox(parent)
{
    brelt::watchInput();
    setFocusPolicy(Qt::StrongFocus);
}

BreltSpinBox::~BreltSpinBox() = default;

void BreltSpinBox::keyPressEvent(QKeyEvent *event)
{
    if (!brelt::isReturnKey(event)) {
        BreltCountSpinBox::keyPressEvent(event);
        return;
    }
    brelt::takeReturnKey(
        event, [this, event] { BreltCountSpinBox::keyPressEvent(event); },
        [this] { emit signal_returnClicked(); });
}

void BreltSpinBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        BreltCountSpinBox::wheelEvent(event);
    else
        event->ignore();
}
