#pragma once

#include <QStringView>

namespace zvplot {

// A short text that is put together without asking for memory: what the crosshair and a new price
// show is written many times a second. What does not fit any more is left out.
class ChartText
{
public:
    ChartText() = default;
    explicit ChartText(QStringView text) { add(text); }

    ChartText &add(QStringView text);

    // A number with so many decimals, rounded to the nearest; "--" where it is none.
    ChartText &addFixed(double value, int decimals);

    // Yuan with two decimals; "1.20亿" from a hundred million on, so that no axis runs away.
    ChartText &addPrice(double yuan);

    // "+1.23" and "-1.23"; "0.00".
    ChartText &addChange(double yuan);

    // "+1.23%", of a share such as 0.0123.
    ChartText &addPercent(double share);

    // "99999", "12.35万", "1.20亿", "3.00万亿": pieces as they are, and shortened from 100,000 on.
    ChartText &addQuantity(double pieces);

    // Likewise with two decimals at all sizes.
    ChartText &addAmount(double yuan);

    // "2019-12-31" and "2019-12" of the number 20191231; "--" where it is none.
    ChartText &addDay(int day);
    ChartText &addMonth(int day);

    // "09:30" in the exchange's wall time, UTC+8.
    ChartText &addClock(qint64 utcMilliseconds);

    QStringView view() const { return QStringView(m_text, m_size); }
    int size() const { return m_size; }

private:
    static constexpr int capacity = 40;

    void put(char16_t character);
    void putWhole(quint64 value, int leastDigits);
    void putShortened(double value, int plainDecimals);

    QChar m_text[capacity];
    int m_size = 0;
};

} // namespace zvplot
