#include "ZvModelKit/zvubtopfive.h"

#include <limits>

namespace {

constexpr std::size_t lowest = 4; // the fifth level's place

bool hasChange(const ZvUBTopFive::Data &data)
{
    return data.latest >= 0 && data.previousClose > 0;
}

qint64 changeOf(const ZvUBTopFive::Data &data)
{
    return data.latest - data.previousClose;
}

qint64 changeRateOf(const ZvUBTopFive::Data &data)
{
    return zvub::roundedRatio(changeOf(data), data.previousClose, 10000);
}

std::array<QString, 29> textsOf(const ZvUBTopFive::Data &data)
{
    std::array<QString, 29> texts{data.name, data.code, data.collectionId};
    std::size_t at = 3;
    for (auto level = data.sells.rbegin(); level != data.sells.rend(); ++level) {
        texts[at++] = zvub::priceText(level->price);
        texts[at++] = zvub::quantityText(level->quantity);
    }
    for (const ZvUBTopFive::Level &level : data.buys) {
        texts[at++] = zvub::priceText(level.price);
        texts[at++] = zvub::quantityText(level.quantity);
    }
    texts[23] = zvub::priceText(data.previousClose);
    texts[24] = zvub::priceText(data.latest);
    texts[25] = hasChange(data) ? zvub::moneyText(changeOf(data)) : zvub::missingText();
    texts[26] = hasChange(data) ? zvub::percentText(changeRateOf(data)) : zvub::missingText();
    texts[27] = zvub::priceText(data.upperLimit);
    texts[28] = zvub::priceText(data.lowerLimit);
    return texts;
}

double priceOrZero(qint64 fen)
{
    return fen < 0 ? 0.0 : zvub::yuan(fen);
}

QList<double> pricesOf(const ZvUBTopFive::Levels &levels)
{
    QList<double> prices;
    prices.reserve(static_cast<int>(levels.size()));
    for (const ZvUBTopFive::Level &level : levels) {
        prices.append(priceOrZero(level.price));
    }
    return prices;
}

} // namespace

ZvUBTopFive::ZvUBTopFive() : ZvUBTopFive(zvub::emptyItem<ZvUBTopFive>()) { }

ZvUBTopFive::ZvUBTopFive(const Data &data) : m_row(Row{data, textsOf(data)}) { }

float ZvUBTopFive::getBuy5Price() const
{
    return static_cast<float>(priceOrZero(data().buys[lowest].price));
}

float ZvUBTopFive::getSell5Price() const
{
    const qint64 price = data().sells[lowest].price;
    return price < 0 ? std::numeric_limits<float>::max() : static_cast<float>(zvub::yuan(price));
}

QList<double> ZvUBTopFive::buyPrices() const
{
    return pricesOf(data().buys);
}

QList<double> ZvUBTopFive::sellPrices() const
{
    return pricesOf(data().sells);
}

double ZvUBTopFive::latestPrice() const
{
    return priceOrZero(data().latest);
}

double ZvUBTopFive::change() const
{
    return hasChange(data()) ? zvub::yuan(changeOf(data())) : 0.0;
}

double ZvUBTopFive::lowerLimitPrice() const
{
    return priceOrZero(data().lowerLimit);
}

double ZvUBTopFive::upperLimitPrice() const
{
    return priceOrZero(data().upperLimit);
}

double ZvUBTopFive::referencePrice() const
{
    return priceOrZero(data().previousClose);
}

double ZvUBTopFive::changeRate() const
{
    return hasChange(data()) ? zvub::yuan(changeRateOf(data())) : 0.0;
}
