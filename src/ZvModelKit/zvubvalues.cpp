#include "ZvModelKit/zvubvalues.h"

#include <QDate>
#include <QStringView>
#include <QTime>

#include <limits>

namespace zvub {

namespace {

constexpr qint64 least = std::numeric_limits<qint64>::min();
constexpr qint64 greatest = std::numeric_limits<qint64>::max();
constexpr int exchangeOffset = 8 * 60 * 60; // seconds east of Greenwich, without summer time

constexpr qint64 millisecondsADay = 24 * 60 * 60 * 1000;
constexpr qint64 epochJulianDay = 2440588; // 1970-01-01
constexpr qint64 lastTime = 253402271999999; // the end of the year 9999 of the exchange

// Hundredths as a decimal number with a unit behind it. Written by hand and in one allocation of
// the exact size: a market holds hundreds of thousands of these texts.
QString hundredthsText(qint64 value, QStringView unit = {})
{
    QChar digits[24];
    QChar *end = digits + 24;
    QChar *first = end;
    for (auto place = unit.size(); place > 0; --place) {
        *--first = unit.at(place - 1);
    }
    quint64 rest = value < 0 ? 0 - static_cast<quint64>(value) : static_cast<quint64>(value);
    for (int written = 0; rest != 0 || written < 3; ++written) {
        if (written == 2) {
            *--first = QLatin1Char('.');
        }
        *--first = QLatin1Char(static_cast<char>('0' + rest % 10));
        rest /= 10;
    }
    if (value < 0) {
        *--first = QLatin1Char('-');
    }
    return QString(first, static_cast<int>(end - first));
}

void writeTwoDigits(QChar *place, int value)
{
    place[0] = QLatin1Char(static_cast<char>('0' + value / 10));
    place[1] = QLatin1Char(static_cast<char>('0' + value % 10));
}

bool isTime(qint64 utcMilliseconds)
{
    return utcMilliseconds >= 0 && utcMilliseconds <= lastTime;
}

qint64 wallMilliseconds(qint64 utcMilliseconds)
{
    return utcMilliseconds + qint64(exchangeOffset) * 1000;
}

} // namespace

QString missingText()
{
    return QStringLiteral("--");
}

QString priceText(qint64 fen)
{
    return fen < 0 ? missingText() : hundredthsText(fen);
}

QString moneyText(qint64 fen)
{
    return hundredthsText(fen);
}

QString shortMoneyText(qint64 fen)
{
    constexpr qint64 shortest = 10000000; // fen: 100,000 yuan
    if (fen > -shortest && fen < shortest) {
        return moneyText(fen);
    }
    // A unit is left for the next one when its figure, as rounded for the text, reaches 10,000.
    constexpr qint64 full = 1000000;
    const qint64 tenThousands = roundedRatio(fen, 10000, 1);
    if (tenThousands > -full && tenThousands < full) {
        return hundredthsText(tenThousands, u"万");
    }
    const qint64 hundredMillions = roundedRatio(fen, 100000000, 1);
    if (hundredMillions > -full && hundredMillions < full) {
        return hundredthsText(hundredMillions, u"亿");
    }
    return hundredthsText(roundedRatio(fen, 1000000000000, 1), u"万亿");
}

QString percentText(qint64 hundredths)
{
    return hundredthsText(hundredths, u"%");
}

QString quantityText(qint64 pieces)
{
    return pieces < 0 ? missingText() : QString::number(pieces);
}

QString directionText(int direction)
{
    switch (direction) {
    case Buy:
        return QStringLiteral("买入");
    case Sell:
        return QStringLiteral("卖出");
    default:
        return missingText();
    }
}

QDateTime exchangeTime(qint64 utcMilliseconds)
{
    return isTime(utcMilliseconds)
        ? QDateTime::fromMSecsSinceEpoch(utcMilliseconds, Qt::OffsetFromUTC, exchangeOffset)
        : QDateTime();
}

QString clockText(qint64 utcMilliseconds)
{
    if (!isTime(utcMilliseconds)) {
        return missingText();
    }
    const auto second
        = static_cast<int>(wallMilliseconds(utcMilliseconds) % millisecondsADay / 1000);
    QString text(8, QLatin1Char(':'));
    writeTwoDigits(text.data(), second / 3600);
    writeTwoDigits(text.data() + 3, second / 60 % 60);
    writeTwoDigits(text.data() + 6, second % 60);
    return text;
}

QString dateTimeText(qint64 utcMilliseconds)
{
    if (!isTime(utcMilliseconds)) {
        return missingText();
    }
    const qint64 day = epochJulianDay + wallMilliseconds(utcMilliseconds) / millisecondsADay;
    return QDate::fromJulianDay(day).toString(Qt::ISODate) + QLatin1Char(' ')
        + clockText(utcMilliseconds);
}

qint64 product(qint64 a, qint64 b)
{
    qint64 result = 0;
    if (__builtin_mul_overflow(a, b, &result)) {
        return (a < 0) == (b < 0) ? greatest : least;
    }
    return result;
}

qint64 sum(qint64 a, qint64 b)
{
    qint64 result = 0;
    if (__builtin_add_overflow(a, b, &result)) {
        return a < 0 ? least : greatest;
    }
    return result;
}

qint64 difference(qint64 a, qint64 b)
{
    qint64 result = 0;
    if (__builtin_sub_overflow(a, b, &result)) {
        return a < 0 ? least : greatest;
    }
    return result;
}

qint64 roundedRatio(qint64 part, qint64 whole, qint64 scale)
{
    __extension__ using Wide = __int128;
    const Wide dividend = Wide(part) * scale;
    const Wide quotient = dividend / whole;
    const Wide rest = dividend % whole;
    const Wide twice = 2 * (rest < 0 ? -rest : rest);
    const Wide bound = whole < 0 ? -Wide(whole) : Wide(whole);
    const Wide away = (dividend < 0) == (whole < 0) ? 1 : -1;
    const Wide rounded = twice >= bound ? quotient + away : quotient;
    if (rounded > greatest) {
        return greatest;
    }
    return rounded < least ? least : static_cast<qint64>(rounded);
}

int cappedInt(qint64 value)
{
    constexpr qint64 low = std::numeric_limits<int>::min();
    constexpr qint64 high = std::numeric_limits<int>::max();
    return static_cast<int>(qBound(low, value, high));
}

} // namespace zvub
