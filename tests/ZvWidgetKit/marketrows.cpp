#include "marketrows.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace zvtest {
namespace {

void drawFigures(ZvUBObject::Data &data, QRandomGenerator &random)
{
    const auto figure = [&random](int from, int to) { return qint64(random.bounded(from, to)); };
    data.latest = figure(100, 200000);
    data.previousClose = figure(100, 200000);
    data.open = figure(100, 200000);
    data.high = figure(100, 200000);
    data.low = figure(100, 200000);
    data.bid = figure(100, 200000);
    data.ask = figure(100, 200000);
    data.bidQuantity = figure(1, 500);
    data.askQuantity = figure(1, 500);
    data.volume = figure(1, 90000);
    data.amount = figure(1, 90000000);
}

} // namespace

ZvUBObject::Data collectionData(int number)
{
    static const QStringList kinds{QStringLiteral("龙凤呈祥银币"), QStringLiteral("生肖猴票"),
                                   QStringLiteral("和田玉籽料"), QStringLiteral("航天纪念钞"),
                                   QStringLiteral("梅兰芳小型张")};
    const int direction = number % 3 == 0 ? 1 : number % 3 == 1 ? -1 : 0;
    ZvUBObject::Data data;
    data.collectionId = QString::number(number);
    data.code = QStringLiteral("C%1").arg(number);
    data.name = kinds.at(number % kinds.size()) + QString::number(number % 100);
    data.introduction = QStringLiteral("https://example.invalid/about/%1").arg(number);
    data.previousClose = 10000 + number;
    data.latest = data.previousClose + direction * (number % 7 + 1) * 100;
    data.open = data.previousClose + 50;
    data.high = std::max(data.latest, data.open) + 10;
    data.low = std::min(data.latest, data.open) - 10;
    data.bid = data.latest - 1;
    data.ask = data.latest + 1;
    data.bidQuantity = number % 40 + 1;
    data.askQuantity = number % 50 + 1;
    data.volume = number % 900 + 10;
    data.amount = data.volume * data.latest;
    data.listed = 100000;
    return data;
}

ZvUBObject collection(int number)
{
    return ZvUBObject(collectionData(number));
}

QList<ZvUBObject> collections(int count)
{
    QList<ZvUBObject> rows;
    for (int i = 0; i < count; ++i)
        rows.append(collection(1001 + i));
    return rows;
}

ZvUBObject composite()
{
    ZvUBObject::Data data = collectionData(1000);
    data.collectionId = QStringLiteral("-1");
    data.code = QStringLiteral("ZZ");
    data.name = QStringLiteral("综合指数");
    data.introduction.clear();
    return ZvUBObject(data);
}

ZvUBObject moved(const ZvUBObject &row, qint64 fen)
{
    ZvUBObject::Data data = row.data();
    data.latest += fen;
    return row.updated(data);
}

QList<ZvUBObject> tick(QList<ZvUBObject> rows, int count, QRandomGenerator &random)
{
    std::vector<int> order(static_cast<std::size_t>(rows.size()));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), random);
    order.resize(static_cast<std::size_t>(std::min(count, rows.size())));
    for (const int row : order) {
        ZvUBObject::Data data = rows.at(row).data();
        drawFigures(data, random);
        rows[row] = rows.at(row).updated(data);
    }
    return rows;
}

} // namespace zvtest
