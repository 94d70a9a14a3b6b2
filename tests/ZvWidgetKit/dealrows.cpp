#include "dealrows.h"

#include <QAbstractItemModel>

namespace zvtest {

ZvUBDealItem deal(int number)
{
    constexpr qint64 morning = 1577842200000; // 2020-01-01 09:30:00 of the exchange
    static constexpr int steps[] = {5, -5, 0};
    static constexpr int directions[] = {zvub::Buy, zvub::Sell, 0};
    const int kind = number % 3;
    ZvUBDealItem::Data data;
    data.sequence = number;
    data.time = morning + number * 1000;
    data.previousClose = 10000;
    data.price = data.previousClose + steps[kind];
    data.quantity = number;
    data.direction = directions[kind];
    return ZvUBDealItem(data);
}

QList<ZvUBDealItem> deals(int count, int first)
{
    QList<ZvUBDealItem> all;
    for (int i = 0; i < count; ++i)
        all.append(deal(first + i));
    return all;
}

QString shownDeals(const QAbstractItemModel *model)
{
    QStringList all;
    for (int row = 0; row < model->rowCount(); ++row)
        all << model->index(row, 2).data().toString();
    return all.join(QLatin1Char(' '));
}

QString numbers(int count, int first)
{
    QStringList all;
    for (int i = 0; i < count; ++i)
        all << QString::number(first + i);
    return all.join(QLatin1Char(' '));
}

} // namespace zvtest
