#pragma once

#include "ZvModelKit/zvubapplyitem.h"
#include "ZvModelKit/zvubcapitem.h"
#include "ZvModelKit/zvubdealrecorditem.h"
#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubgatheritem.h"
#include "ZvModelKit/zvubmoneyflowitem.h"

#include <QList>

namespace zvtest {

// The record of a number, which it carries as its own number. Odd ones are buys or money in, even
// ones sales or money out.
ZvUBDealRecordItem dealRecord(int number);
ZvUBEntrustItem order(int number);
ZvUBApplyItem application(int number);
ZvUBMoneyFlowItem moneyFlow(int number);

// The same with the longest texts and the largest figures that the exchange may bring.
ZvUBDealRecordItem longestDealRecord();
ZvUBEntrustItem longestOrder();
ZvUBApplyItem longestApplication();
ZvUBMoneyFlowItem longestMoneyFlow();

// A holding and the day's sums of the collection "1000 + number". Holdings of the numbers 3n win,
// 3n + 1 lose, 3n + 2 stand as they were; the sums likewise, in pieces and in yuan.
ZvUBCapItem holding(int number);
ZvUBGatherItem daySum(int number);
ZvUBCapItem longestHolding();
ZvUBGatherItem longestDaySum();

// `count` items from a number on, counting up.
template <typename Item>
QList<Item> rowsOf(Item (*make)(int), int count, int first = 1)
{
    QList<Item> rows;
    for (int i = 0; i < count; ++i)
        rows.append(make(first + i));
    return rows;
}

} // namespace zvtest
