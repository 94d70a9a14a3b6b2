#pragma once

#include "ZvModelKit/zvubdeliveryrecorditem.h"
#include "ZvModelKit/zvubrevokeitem.h"

#include <QList>
#include <QString>

class QAbstractItemModel;

namespace zvtest {

// The open order of a number; odd ones are buys, even ones sales.
ZvUBRevokeItem openOrder(int number);

// Open orders of these numbers.
QList<ZvUBRevokeItem> openOrders(const QList<int> &numbers);

// The application of a number, which can be cancelled: its identifier is "d7", its order number
// "T7", its name "藏品7" and its quantity 7, for the number 7.
ZvUBDeliveryRecordItem::Data deliveryData(int number);
QList<ZvUBDeliveryRecordItem> deliveries(const QList<int> &numbers);

// The same with the longest texts and the largest figures that the exchange may bring, an order
// with a tick or without, an application in a state.
ZvUBRevokeItem longestOpenOrder(int number, bool isTicked);
ZvUBDeliveryRecordItem longestDelivery(int number, int state);

// The texts of one column, "7 8 9".
QString columnOf(const QAbstractItemModel *model, int column);

// The rows with a tick in column 0, "0 2".
QString tickedRows(const QAbstractItemModel *model);

} // namespace zvtest
