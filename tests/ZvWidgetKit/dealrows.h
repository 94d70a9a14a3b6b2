#pragma once

#include "ZvModelKit/zvubdealitem.h"

#include <QList>
#include <QStringList>

class QAbstractItemModel;

namespace zvtest {

// The deal of a number: its quantity is the number, so that a list is known by its quantities. It
// rises above the previous close, falls below it or stands as the number modulo 3 is 0, 1 or 2, and
// its second side is the buyer, the seller or neither in the same way.
ZvUBDealItem deal(int number);

// `count` deals from a number on, counting up.
QList<ZvUBDealItem> deals(int count, int first = 1);

// The numbers of the deals that a model shows, "3 4 5".
QString shownDeals(const QAbstractItemModel *model);

// "3 4 5" for three numbers from 3 on.
QString numbers(int count, int first = 1);

} // namespace zvtest
