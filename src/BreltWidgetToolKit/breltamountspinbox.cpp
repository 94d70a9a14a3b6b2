#include "BreltWidgetToolKit/breltamountspinbox.h"

#include "BreltWidgetToolKit/breltplainnumbers.h"

#include <QLocale>

BreltAmountSpinBox::BreltAmountSpinBox(QWidget *parent) : QDoubleSpinBox(parent)
{
    setLocale(QLocale::c());
}

BreltAmountSpinBox::~BreltAmountSpinBox() = default;

QValidator::State BreltAmountSpinBox::validate(QString &text, int &place) const
{
    brelt::makeDigitsPlain(text);
    brelt::makePointsPlain(text);
    return QDoubleSpinBox::validate(text, place);
}
