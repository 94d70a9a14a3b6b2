#include "ZvWidgetKit/ticketorder.h"

#include "ZvNetworkKit/serverpaths.h"

#include <cmath>
#include <limits>

// Prices of both sides are floats here: 11.03 as a double is more than the float 11.03, and an
// order at the limit itself would be refused.
QString faultOf(const TicketOrder &order, const TicketLimits &limits)
{
    if (!limits.codes.contains(order.code))
        return QStringLiteral("请输入正确的商品代码!");
    if (!limits.names.contains(order.name))
        return QStringLiteral("请输入正确的商品名称!");
    if (order.price < limits.lowestPrice || order.price > limits.highestPrice)
        return QStringLiteral("请输入正确的商品价格!");
    if (order.count <= 0 || order.count > limits.largestCount)
        return QStringLiteral("请输入正确的商品数量!");
    return {};
}

// Each paragraph is filled by itself: a name may hold a place marker of the next one.
QString confirmationOf(const TicketOrder &order)
{
    return QStringLiteral("<p align='center'>商品ID:&nbsp;&nbsp;&nbsp;&nbsp;%1</p>")
               .arg(order.code.toHtmlEscaped())
        + QStringLiteral("<p align='center'>%1</p>").arg(order.name.toHtmlEscaped())
        + QStringLiteral("<p align='center'>价格:%1&nbsp;&nbsp;&nbsp;&nbsp;数量：%2</p>")
              .arg(double(order.price))
              .arg(order.count);
}

// The rate stays a double: as a float, 1.003 would make 10.04 of the 10.03 that a piece at 10.00
// costs. What comes out is held at the ends of int before it becomes one.
int buyableCount(float money, float price, double feeRate)
{
    const double factor = 1 + feeRate;
    const double cost
        = qFuzzyCompare(factor, 1.0) ? double(price) : std::ceil(price * factor * 100) / 100.0;
    using Limits = std::numeric_limits<int>;
    return int(qBound(double(Limits::min()), money / cost, double(Limits::max())));
}
