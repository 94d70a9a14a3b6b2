#include "exchange/kills/intents.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>

namespace zvxtest {

using zvx::CollectionId;
using zvx::Fen;
using zvx::Quantity;
using zvx::Side;

namespace {

struct Traded {
    std::int64_t collection;
    std::int64_t previousClose; ///< limits lie a tenth below and above
};

constexpr std::array<Traded, 3> kTraded = {{{2100, 1000}, {2101, 1005}, {2106, 47'000}}};

} // namespace

std::string Intent::question() const
{
    return "key=" + key + "&resolve=1" + (kind == Revoke ? "&" + fields : std::string());
}

Word Word::of(const std::string &body)
{
    const auto json = nlohmann::json::parse(body, nullptr, false);
    if (!json.is_object())
        return {};
    const std::string status = json.value("status", std::string());
    const std::string reason = json.value("reason", std::string());
    Word word;
    word.said = status + ' ' + reason
        + (json.contains("data") ? ' ' + json["data"].dump() : std::string());
    word.done = status == "ok";
    if (word.done) {
        word.order = json.value("/data/order"_json_pointer, std::int64_t(0));
        word.parcel = json.value("/data/id"_json_pointer, std::string());
    }
    const bool isFinal = word.done || (status == "refused" && reason != "pending");
    word.kind = isFinal ? Final : Passing;
    return word;
}

Wishes::Wishes(std::uint64_t seed, int trader)
    : m_random(seed * 64 + static_cast<std::uint64_t>(trader))
{
    char text[32];
    std::snprintf(text, sizeof text, "%016llx%04x", static_cast<unsigned long long>(seed),
                  static_cast<unsigned>(trader));
    m_keys = text;
}

std::string Wishes::newKey()
{
    char text[16];
    std::snprintf(text, sizeof text, "%012x", ++m_made);
    return m_keys + text;
}

Intent Wishes::next()
{
    Intent intent;
    intent.key = newKey();
    const std::size_t kind = below(100);
    if (kind < 10)
        payOut(intent);
    else if (kind < 32 && !m_orders.empty())
        revoke(intent);
    else if (kind < 42)
        takeOut(intent);
    else if (kind < 50 && !m_parcels.empty())
        takeBack(intent);
    else
        placeOrder(intent);
    return intent;
}

void Wishes::payOut(Intent &intent)
{
    intent.kind = Intent::PayOut;
    intent.path = "pay/cash-deal.html";
    intent.amount = Fen(static_cast<std::int64_t>(1 + below(5'000)));
    intent.fields = "amount=" + std::to_string(intent.amount.value());
}

void Wishes::revoke(Intent &intent)
{
    intent.kind = Intent::Revoke;
    intent.path = "trade/revoke.html";
    intent.order = m_orders[below(m_orders.size())];
    intent.fields = "orders=" + std::to_string(intent.order);
}

void Wishes::takeOut(Intent &intent)
{
    intent.kind = Intent::TakeOut;
    intent.path = "trade/take.html";
    intent.collection = CollectionId(kTraded[below(kTraded.size())].collection);
    // Now and then more than anybody has.
    intent.quantity = Quantity(static_cast<std::int64_t>(below(12) == 0 ? 100'000 : 1 + below(4)));
    intent.fields = "collection=" + std::to_string(intent.collection.value())
        + "&quantity=" + std::to_string(intent.quantity.value())
        + "&person=林晓月&phone=13911112222&address=和平路1号";
}

void Wishes::takeBack(Intent &intent)
{
    intent.kind = Intent::TakeBack;
    intent.path = "trade/take.html";
    // Mostly one that was asked for a moment ago: the others are packed, or cancelled already.
    const std::size_t newest
        = below(2) == 0 ? std::min<std::size_t>(m_parcels.size(), 2) : m_parcels.size();
    intent.parcel = m_parcels[m_parcels.size() - 1 - below(newest)];
    intent.fields = "cancel=" + intent.parcel;
}

void Wishes::placeOrder(Intent &intent)
{
    const Traded &traded = kTraded[below(kTraded.size())];
    intent.collection = CollectionId(traded.collection);
    intent.side = below(2) == 0 ? Side::Buy : Side::Sell;
    intent.path = intent.side == Side::Buy ? "trade/buy.html" : "trade/sell.html";
    // Close together, so that many meet; some stand outside the limits and are refused.
    intent.price = Fen(traded.previousClose + static_cast<std::int64_t>(below(9)) - 4
                       + (below(13) == 0 ? traded.previousClose : 0));
    intent.quantity = Quantity(static_cast<std::int64_t>(1 + below(4)));
    intent.fields = "collection=" + std::to_string(traded.collection)
        + "&price=" + std::to_string(intent.price.value())
        + "&quantity=" + std::to_string(intent.quantity.value());
}

} // namespace zvxtest
