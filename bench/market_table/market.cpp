#include "market.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr int spacing = 10; // fen between the resting bids of two neighbours
constexpr int lowestBid = 1000; // fen

QByteArray quoted(const QString &text)
{
    return '"' + text.toUtf8() + '"';
}

} // namespace

Market::Market(int rows, quint32 seed)
    : m_random(seed), m_rows(at(rows)), m_bases(at(rows)), m_order(at(rows))
{
    std::iota(m_order.begin(), m_order.end(), 0);
    m_bases = m_order;
    std::shuffle(m_bases.begin(), m_bases.end(), m_random);
    for (int &base : m_bases)
        base = lowestBid + base * spacing;

    for (int i = 0; i < rows; ++i) {
        ZvUBObject::Data &row = m_rows[at(i)];
        const int base = m_bases[at(i)];
        row.collectionId = QString::number(100001 + i);
        row.code = QString::number(600000 + i);
        row.name = QStringLiteral("第%1版纪念邮票").arg(i + 1);
        row.introduction = QStringLiteral("https://exchange.invalid/item/%1").arg(i);
        row.type = 1 + i % 5;
        row.previousClose = base + random(-300, 300);
        row.open = base + random(-200, 200);
        row.high = base + 400;
        row.low = base - 400;
        row.latest = base + random(-300, 300);
        row.listed = 1000 * random(10, 5000);
        row.volume = random(1, 200000);
        row.amount = row.volume * base;
        row.bid = base;
        row.ask = base + 50;
        row.bidQuantity = random(1, 5000);
        row.askQuantity = random(1, 5000);
    }
}

int Market::random(int least, int most)
{
    return least + static_cast<int>(m_random() % static_cast<quint32>(most - least + 1));
}

void Market::tick(int changedRows, Move move)
{
    std::shuffle(m_order.begin(), m_order.end(), m_random);
    m_changed.assign(m_order.begin(), m_order.begin() + changedRows);
    std::sort(m_changed.begin(), m_changed.end());
    for (const int index : m_changed)
        changeRow(index, move);
    ++m_version;
}

void Market::changeRow(int index, Move move)
{
    // Each of the four is another number than before.
    const auto changed = [this](qint64 before, int least, int most) -> qint64 {
        const int value = random(least, most - 1);
        return value < before ? value : value + 1;
    };
    ZvUBObject::Data &row = m_rows[at(index)];
    const int base = m_bases[at(index)];
    const int reach = move == Move::KeepsOrder ? spacing / 2 - 1 : base / 33;
    row.bid = changed(row.bid, base - reach, base + reach);
    row.ask = changed(row.ask, base + 50 - reach, base + 50 + reach);
    row.bidQuantity = changed(row.bidQuantity, 1, 5000);
    row.askQuantity = changed(row.askQuantity, 1, 5000);
}

QByteArray Market::listData() const
{
    QByteArray json = "{\"rows\":[";
    for (const ZvUBObject::Data &row : m_rows) {
        const auto text = [&json](const char *key, const QString &value) {
            json += '"' + QByteArray(key) + "\":" + quoted(value) + ',';
        };
        const auto number = [&json](const char *key, qint64 value) {
            json += '"' + QByteArray(key) + "\":" + QByteArray::number(value) + ',';
        };
        json += '{';
        text("id", row.collectionId);
        text("code", row.code);
        text("name", row.name);
        number("type", row.type);
        number("listed", row.listed);
        text("introduction", row.introduction);
        number("latest", row.latest);
        number("previousClose", row.previousClose);
        number("open", row.open);
        number("high", row.high);
        number("low", row.low);
        number("bid", row.bid);
        number("ask", row.ask);
        number("bidQuantity", row.bidQuantity);
        number("askQuantity", row.askQuantity);
        number("volume", row.volume);
        number("amount", row.amount);
        json.chop(1);
        json += "},";
    }
    json.chop(1);
    return json + "]}";
}

QByteArray Market::changesData() const
{
    QByteArray json = "{\"topics\":{\"list\":{\"version\":" + QByteArray::number(m_version)
        + ",\"base\":" + QByteArray::number(m_version - 1) + ",\"changes\":[";
    for (const int index : m_changed) {
        const ZvUBObject::Data &changed = row(index);
        json += '[' + QByteArray::number(index) + ",{\"bid\":" + QByteArray::number(changed.bid)
            + ",\"ask\":" + QByteArray::number(changed.ask)
            + ",\"bidQuantity\":" + QByteArray::number(changed.bidQuantity)
            + ",\"askQuantity\":" + QByteArray::number(changed.askQuantity) + "}],";
    }
    json.chop(1);
    return json + "]}}}";
}
