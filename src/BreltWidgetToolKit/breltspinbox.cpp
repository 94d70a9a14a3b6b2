#include "BreltWidgetToolKit/breltspinbox.h"

#include "BreltWidgetToolKit/breltplainnumbers.h"
#include "BreltWidgetToolKit/breltreturnkey.h"

#include <QLocale>
#include <QWheelEvent>

BreltSpinBox::BreltSpinBox(QWidget *parent) : QSpinBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setLocale(QLocale::c());
}

BreltSpinBox::~BreltSpinBox() = default;

QValidator::State BreltSpinBox::validate(QString &text, int &place) const
{
    brelt::makeDigitsPlain(text);
    return QSpinBox::validate(text, place);
}

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
