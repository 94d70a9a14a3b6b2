#pragma once

#include "ZvModelKit/zvmodelkit_export.h"

#include <QDateTime>
#include <QString>

// What all items share: the units of their raw fields and the texts made of them.
//
// Prices and money are whole fen (1/100 yuan), quantities whole pieces, times UTC milliseconds
// since 1970. Rates are worked out of these and rounded to hundredths of a percent, as their texts
// are.
namespace zvub {

// A price, quantity or time that does not exist yet; every negative one counts as this.
constexpr qint64 noValue = -1;

// The side of an order or a deal. Other numbers are shown as missing.
enum Direction { Buy = 1, Sell = 2 };

// "--", the text of a cell without a value. The text is shared, it costs no memory of its own.
ZVMODELKIT_EXPORT QString missingText();

// "12.34"; "--" when negative. A plain number without separators.
ZVMODELKIT_EXPORT QString priceText(qint64 fen);

// "-12.34": an amount that may be negative, as a plain number of two decimals.
ZVMODELKIT_EXPORT QString moneyText(qint64 fen);

// "12.35万", "1.20亿", "3.00万亿": money from 100,000 yuan on, cut to what a narrow column holds;
// smaller amounts are those of moneyText().
ZVMODELKIT_EXPORT QString shortMoneyText(qint64 fen);

// "-2.50%", of hundredths of a percent.
ZVMODELKIT_EXPORT QString percentText(qint64 hundredths);

// "1200"; "--" when negative. A plain number without separators.
ZVMODELKIT_EXPORT QString quantityText(qint64 pieces);

// "买入", "卖出" or "--".
ZVMODELKIT_EXPORT QString directionText(int direction);

// The exchange's wall time, UTC+8 on every machine. Invalid for a negative time.
ZVMODELKIT_EXPORT QDateTime exchangeTime(qint64 utcMilliseconds);

// "09:30:01" in the exchange's wall time; "--" when negative.
ZVMODELKIT_EXPORT QString clockText(qint64 utcMilliseconds);

// "2020-01-01 09:30:01" in the exchange's wall time; "--" when negative.
ZVMODELKIT_EXPORT QString dateTimeText(qint64 utcMilliseconds);

// a * b, held at the ends of qint64 instead of overflowing.
ZVMODELKIT_EXPORT qint64 product(qint64 a, qint64 b);

// a + b and a - b, held at the ends of qint64 instead of overflowing.
ZVMODELKIT_EXPORT qint64 sum(qint64 a, qint64 b);
ZVMODELKIT_EXPORT qint64 difference(qint64 a, qint64 b);

// part * scale / whole, rounded half away from zero and held at the ends of qint64; whole is not 0.
ZVMODELKIT_EXPORT qint64 roundedRatio(qint64 part, qint64 whole, qint64 scale);

// Pieces as an int, held at its ends: what a widget that counts in int may be given.
ZVMODELKIT_EXPORT int cappedInt(qint64 value);

// Fen in yuan.
inline double yuan(qint64 fen)
{
    return static_cast<double>(fen) / 100.0;
}

} // namespace zvub
