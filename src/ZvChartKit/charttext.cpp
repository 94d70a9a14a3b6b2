#include "ZvChartKit/charttext.h"

#include <algorithm>
#include <cmath>

namespace zvplot {

namespace {

constexpr double tenThousand = 1e4;
constexpr double hundredMillion = 1e8;
constexpr double trillion = 1e12;
constexpr double shortest = 1e5; // from here on a quantity is shortened
constexpr int minutesEast = 8 * 60;
constexpr int minutesADay = 24 * 60;

} // namespace

ChartText &ChartText::add(QStringView text)
{
    for (const QChar character : text)
        put(character.unicode());
    return *this;
}

ChartText &ChartText::addFixed(double value, int decimals)
{
    static constexpr double powers[] = {1, 10, 100, 1000, 10000};
    const int places = std::clamp(decimals, 0, 4);
    if (!std::isfinite(value))
        return add(u"--");
    const double most = 9e18;
    const auto scaled
        = static_cast<quint64>(std::round(std::min(std::abs(value) * powers[places], most)));
    if (value < 0 && scaled > 0)
        put(u'-');
    const auto unit = static_cast<quint64>(powers[places]);
    putWhole(scaled / unit, 1);
    if (places > 0) {
        put(u'.');
        putWhole(scaled % unit, places);
    }
    return *this;
}

ChartText &ChartText::addPrice(double yuan)
{
    if (std::abs(yuan) >= hundredMillion)
        putShortened(yuan, 2);
    else
        addFixed(yuan, 2);
    return *this;
}

ChartText &ChartText::addChange(double yuan)
{
    if (yuan >= 0.005)
        put(u'+');
    return addPrice(yuan);
}

ChartText &ChartText::addPercent(double share)
{
    if (!std::isfinite(share))
        return add(u"--");
    if (share * 100 >= 0.005)
        put(u'+');
    return addFixed(share * 100, 2).add(u"%");
}

ChartText &ChartText::addQuantity(double pieces)
{
    putShortened(pieces, 0);
    return *this;
}

ChartText &ChartText::addAmount(double yuan)
{
    putShortened(yuan, 2);
    return *this;
}

ChartText &ChartText::addDay(int day)
{
    if (day <= 0)
        return add(u"--");
    addMonth(day);
    put(u'-');
    putWhole(static_cast<quint64>(day % 100), 2);
    return *this;
}

ChartText &ChartText::addMonth(int day)
{
    if (day <= 0)
        return add(u"--");
    putWhole(static_cast<quint64>(day / 10000), 4);
    put(u'-');
    putWhole(static_cast<quint64>(day / 100 % 100), 2);
    return *this;
}

ChartText &ChartText::addClock(qint64 utcMilliseconds)
{
    const auto minute = static_cast<int>((utcMilliseconds / 60000 + minutesEast) % minutesADay);
    const auto ofDay = static_cast<quint64>(minute < 0 ? minute + minutesADay : minute);
    putWhole(ofDay / 60, 2);
    put(u':');
    putWhole(ofDay % 60, 2);
    return *this;
}

void ChartText::put(char16_t character)
{
    if (m_size < capacity)
        m_text[m_size++] = QChar(character);
}

void ChartText::putWhole(quint64 value, int leastDigits)
{
    char16_t digits[20];
    int count = 0;
    for (; value > 0 || count < leastDigits; value /= 10)
        digits[count++] = static_cast<char16_t>(u'0' + value % 10);
    while (count > 0)
        put(digits[--count]);
}

void ChartText::putShortened(double value, int plainDecimals)
{
    // A unit is left for the next one where its figure, as rounded for the text, reaches 10,000.
    const double size = std::abs(value);
    const double full = 9999.995;
    if (!(size >= shortest))
        addFixed(value, plainDecimals);
    else if (size < full * tenThousand)
        addFixed(value / tenThousand, 2).add(u"万");
    else if (size < full * hundredMillion)
        addFixed(value / hundredMillion, 2).add(u"亿");
    else
        addFixed(value / trillion, 2).add(u"万亿");
}

} // namespace zvplot
