#include "BreltWidgetToolKit/breltspinbox.h"

#include "BreltWidgetToolKit/breltreturnkey.h"

#include <QWheelEvent>

BreltSpinBox::BreltSpinBox(QWidget *parent) : QSpinBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
}

BreltSpinBox::~BreltSpinBox() = default;

void BreltSpinBox::keyPressEvent(QKeyEvent *event)
{
    if (!brelt::isReturnKey(event)) {
        QSpinBox::keyPressEvent(event);
        return;
    }
    brelt::takeReturnKey(
        event, [this, event] { QSpinBox::keyPressEvent(event); },
        [this] { emit signal_returnClicked(); });
}

void BreltSpinBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QSpinBox::wheelEvent(event);
    else
        event->ignore();
}
