#include "BreltWidgetToolKit/breltcountspinbox.h"

#include "BreltWidgetToolKit/breltplainnumbers.h"

#include <QLocale>

BreltCountSpinBox::BreltCountSpinBox(QWidget *parent) : QSpinBox(parent)
{
    setLocale(QLocale::c());
}

BreltCountSpinBox::~BreltCountSpinBox() = default;

QValidator::State BreltCountSpinBox::validate(QString &text, int &place) const
{
    brelt::makeDigitsPlain(text);
    brelt::makePointsPlain(text);
    if (!text.contains(QLatin1Char('.')))
        return QSpinBox::validate(text, place);
    QString digits = text;
    digits.remove(QLatin1Char('.'));
    int placeInDigits = 0;
    return qMin(QSpinBox::validate(digits, placeInDigits), QValidator::Intermediate);
}
