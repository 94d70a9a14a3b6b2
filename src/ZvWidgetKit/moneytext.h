#pragma once

#include "BreltWidgetToolKit/breltglobalfunction.h"

#include <QString>

// An amount in yuan as the pages show it: two decimals and a unit such as "万", without the yuan.
inline QString moneyText(double yuan)
{
    QString number;
    QString unit;
    BreltGlobalFunction::getMoneyValue(yuan, number, unit);
    return number + unit;
}
