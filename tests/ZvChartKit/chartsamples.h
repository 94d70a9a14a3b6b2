#pragma once

#include "ZvModelKit/zvubkline.h"
#include "ZvModelKit/zvubtimeline.h"

#include <QDate>

#include <algorithm>
#include <cmath>

// Figures for charts: the same ones in every run.
namespace chartsamples {

// A small random source of its own, so that the figures do not depend on a library.
class Chance
{
public:
    explicit Chance(quint32 seed) : m_state(seed) { }

    // From 0 up to, but without, `bound`.
    int below(int bound)
    {
        m_state = m_state * 1664525u + 1013904223u;
        return static_cast<int>((m_state >> 8) % static_cast<quint32>(bound));
    }

private:
    quint32 m_state;
};

inline ZvUBBar bar(const QString &day, double open, double high, double low, double close,
                   qint64 volume = 100)
{
    ZvUBBar made;
    made.day = day;
    made.open = open;
    made.high = high;
    made.low = low;
    made.close = close;
    made.volume = volume;
    made.amount = close * static_cast<double>(volume);
    return made;
}

// A walk of prices in whole fen, one bar a weekday up to the end of 2019.
inline ZvUBKLine kLine(int count, quint32 seed = 1, const QString &id = QStringLiteral("1001"))
{
    Chance chance(seed);
    ZvUBKLine line;
    line.collectionId = id;
    line.session = 1;
    line.bars.resize(count);
    QDate day(2019, 12, 31);
    for (int i = count - 1; i >= 0; --i) {
        line.bars[i].day = day.toString(Qt::ISODate);
        do
            day = day.addDays(-1);
        while (day.dayOfWeek() > 5);
    }
    int price = 10000; // fen
    for (ZvUBBar &made : line.bars) {
        const int open = std::max(100, price + chance.below(101) - 50);
        const int close = std::max(100, open + chance.below(401) - 200);
        made.open = open / 100.0;
        made.close = close / 100.0;
        made.high = (std::max(open, close) + chance.below(80)) / 100.0;
        made.low = (std::min(open, close) - chance.below(80)) / 100.0;
        made.volume = 50 + chance.below(5000);
        made.amount = made.close * static_cast<double>(made.volume);
        price = close;
    }
    return line;
}

constexpr qint64 minute = 60 * 1000;

// 2020-01-02 09:30 of the exchange, UTC+8.
constexpr qint64 morning = 1577928600000;
constexpr qint64 afternoon = morning + 210 * minute; // 13:00

// A day of two spans, 09:30 to 11:30 and 13:00 to 15:00, with a deal in each of the first minutes.
inline ZvUBTimeLine timeLine(int minutes, quint32 seed = 1,
                             const QString &id = QStringLiteral("1001"))
{
    Chance chance(seed);
    ZvUBTimeLine line;
    line.collectionId = id;
    line.tradingDay = QStringLiteral("2020-01-02");
    line.session = 1;
    line.previousClose = 100;
    line.spans = {{morning, morning + 120 * minute}, {afternoon, afternoon + 120 * minute}};
    int price = 10000; // fen
    double amount = 0;
    qint64 volume = 0;
    for (int i = 0; i < minutes; ++i) {
        price = std::max(100, price + chance.below(61) - 30);
        ZvUBMinute made;
        made.time = i < 120 ? morning + i * minute : afternoon + (i - 120) * minute;
        made.price = price / 100.0;
        made.volume = 10 + chance.below(900);
        amount += made.price * static_cast<double>(made.volume);
        volume += made.volume;
        made.average = std::round(amount / static_cast<double>(volume) * 100) / 100;
        line.minutes.append(made);
    }
    return line;
}

} // namespace chartsamples
