#include "recordrows.h"

namespace zvtest {
namespace {

constexpr qint64 morning = 1577842200000; // 2020-01-01 09:30:00 of the exchange
constexpr qint64 highestPrice = 13107199;
constexpr qint64 mostPieces = 9999999999;
constexpr qint64 mostMoney = 900000000000000;

QString codeOf(int number)
{
    return QString::number(600000 + number);
}

QString nameOf(int number)
{
    return QStringLiteral("庚申猴票%1").arg(number);
}

QString longCode()
{
    return QStringLiteral("88888888");
}

QString longName()
{
    return QStringLiteral("庚申年生肖猴票整版八十枚带边纸厂铭纪念版");
}

int sideOf(int number)
{
    return number % 2 == 1 ? zvub::Buy : zvub::Sell;
}

} // namespace

ZvUBDealRecordItem dealRecord(int number)
{
    ZvUBDealRecordItem::Data data;
    data.direction = sideOf(number);
    data.code = codeOf(number);
    data.name = nameOf(number);
    data.price = 10000 + number;
    data.quantity = 10 * number;
    data.fee = 3 * number;
    data.time = morning + number * 1000;
    data.number = number;
    return ZvUBDealRecordItem(data);
}

ZvUBEntrustItem order(int number)
{
    ZvUBEntrustItem::Data data;
    data.orderNumber = number;
    data.direction = sideOf(number);
    data.collectionId = QString::number(1000 + number);
    data.code = codeOf(number);
    data.name = nameOf(number);
    data.key = QStringLiteral("key%1").arg(number);
    data.price = 10000 + number;
    data.quantity = 10 * number;
    data.filled = 4 * number;
    data.amount = 4 * number * (10000 + number);
    data.fee = 3 * number;
    data.state = 1 + number % 6;
    data.time = morning + number * 1000;
    return ZvUBEntrustItem(data);
}

ZvUBApplyItem application(int number)
{
    ZvUBApplyItem::Data data;
    data.code = codeOf(number);
    data.name = nameOf(number);
    data.price = 10000 + number;
    data.quantity = 10 * number;
    data.allotted = number;
    data.state = number % 4;
    data.time = morning + number * 1000;
    data.number = number;
    return ZvUBApplyItem(data);
}

ZvUBMoneyFlowItem moneyFlow(int number)
{
    ZvUBMoneyFlowItem::Data data;
    data.number = number;
    data.moneyIn = number % 2;
    data.amount = 100000 * number + 5;
    data.time = morning + number * 1000;
    data.note = QStringLiteral("工商银行 尾号6789");
    data.state = number % 3;
    return ZvUBMoneyFlowItem(data);
}

ZvUBDealRecordItem longestDealRecord()
{
    ZvUBDealRecordItem::Data data = dealRecord(1).data();
    data.code = longCode();
    data.name = longName();
    data.price = highestPrice;
    data.quantity = mostPieces;
    data.fee = mostMoney;
    data.number = 2147483647;
    return ZvUBDealRecordItem(data);
}

ZvUBEntrustItem longestOrder()
{
    ZvUBEntrustItem::Data data = order(1).data();
    data.orderNumber = 2147483647;
    data.code = longCode();
    data.name = longName();
    data.price = highestPrice;
    data.quantity = data.filled = data.withdrawn = mostPieces;
    data.amount = data.fee = mostMoney;
    return ZvUBEntrustItem(data);
}

ZvUBApplyItem longestApplication()
{
    ZvUBApplyItem::Data data = application(1).data();
    data.code = longCode();
    data.name = longName();
    data.price = highestPrice;
    data.quantity = data.allotted = mostPieces;
    data.number = 2147483647;
    return ZvUBApplyItem(data);
}

ZvUBMoneyFlowItem longestMoneyFlow()
{
    ZvUBMoneyFlowItem::Data data = moneyFlow(1).data();
    data.number = 2147483647;
    data.amount = mostMoney;
    data.note = QStringLiteral("中国工商银行股份有限公司深圳福田支行 尾号6789");
    return ZvUBMoneyFlowItem(data);
}

ZvUBCapItem holding(int number)
{
    static constexpr int steps[] = {5, -5, 0};
    ZvUBCapItem::Data data;
    data.collectionId = QString::number(1000 + number);
    data.code = codeOf(number);
    data.name = nameOf(number);
    data.quantity = 10 * number;
    data.sellable = 7 * number;
    data.cost = data.quantity * 10000;
    data.latest = 10000 + steps[number % 3];
    return ZvUBCapItem(data);
}

ZvUBGatherItem daySum(int number)
{
    static constexpr int steps[] = {5, -5, 0};
    ZvUBGatherItem::Data data;
    data.collectionId = QString::number(1000 + number);
    data.code = codeOf(number);
    data.name = nameOf(number);
    data.sellQuantity = 10 * number;
    data.buyQuantity = data.sellQuantity + steps[number % 3];
    data.buyAmount = data.buyQuantity * 10000;
    data.sellAmount = data.sellQuantity * 10010;
    data.buyFee = 3 * number;
    data.sellFee = 2 * number;
    data.sellProfit = 100 * steps[number % 3];
    return ZvUBGatherItem(data);
}

ZvUBCapItem longestHolding()
{
    ZvUBCapItem::Data data = holding(1).data();
    data.code = longCode();
    data.name = longName();
    data.quantity = mostPieces;
    data.sellable = 1;
    data.cost = 1;
    data.latest = highestPrice;
    return ZvUBCapItem(data);
}

ZvUBGatherItem longestDaySum()
{
    ZvUBGatherItem::Data data = daySum(1).data();
    data.code = longCode();
    data.name = longName();
    data.buyQuantity = mostPieces;
    data.sellQuantity = 1;
    data.buyAmount = data.buyFee = data.sellAmount = data.sellFee = mostMoney;
    data.sellProfit = -mostMoney;
    return ZvUBGatherItem(data);
}

} // namespace zvtest
