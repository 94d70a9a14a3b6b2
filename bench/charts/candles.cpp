#include "candles.h"

#include <QDate>

#include <algorithm>
#include <cmath>
#include <random>

ZvUBKLine candles(int count, quint32 seed)
{
    std::mt19937 random(seed);
    const auto below
        = [&random](int bound) { return static_cast<int>(random() % unsigned(bound)); };
    ZvUBKLine line;
    line.collectionId = QStringLiteral("1001");
    line.session = 1;
    line.bars.resize(count);
    QDate day = QDate(2019, 12, 31).addDays(1 - count);
    int price = 500000; // fen
    for (ZvUBBar &bar : line.bars) {
        const int open = std::max(1000, price + below(101) - 50);
        const int close = std::max(1000, open + below(401) - 200);
        bar.day = day.toString(Qt::ISODate);
        bar.open = open / 100.0;
        bar.close = close / 100.0;
        bar.high = (std::max(open, close) + below(80)) / 100.0;
        bar.low = (std::min(open, close) - below(80)) / 100.0;
        bar.volume = 50 + below(5000);
        bar.amount = bar.close * static_cast<double>(bar.volume);
        price = close;
        day = day.addDays(1);
    }
    // Room for the last price to move in.
    line.bars.last().high += 0.5;
    line.bars.last().low -= 0.5;
    return line;
}

void movePrice(ZvUBKLine *line, int tick)
{
    ZvUBBar &last = line->bars.last();
    last.close = last.low + 0.01 * (1 + tick % 97);
    last.high = std::max(last.high, last.close);
    last.volume = 40 + tick % 7;
}

double averageAt(const ZvUBKLine &line, int bar, int period)
{
    if (bar + 1 < period)
        return std::nan("");
    double sum = 0;
    for (int i = bar + 1 - period; i <= bar; ++i)
        sum += line.bars.at(i).close;
    return sum / period;
}
