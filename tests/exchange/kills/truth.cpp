#include "exchange/kills/truth.h"

#include "exchange/kills/names.h"
#include "exchange/store/marketreader.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"

#include <fstream>
#include <map>

namespace zvxtest {

using namespace zvx;

namespace {

using KeyText = std::pair<std::uint64_t, std::uint64_t>;
using ByKey = std::map<KeyText, const Intent *>;

KeyText keyOf(ActionKey key)
{
    return {key.high, key.low};
}

ByKey byKey(const std::vector<TradingClient> &clients, Intent::Kind kind)
{
    ByKey found;
    for (const TradingClient &client : clients)
        for (const Intent &intent : client.intents())
            if (intent.kind == kind)
                found[keyOf(*ActionKey::fromText(intent.key))] = &intent;
    return found;
}

std::size_t doneOf(const ByKey &intents)
{
    std::size_t done = 0;
    for (const auto &entry : intents)
        done += entry.second->done ? 1 : 0;
    return done;
}

const Intent *find(const ByKey &intents, ActionKey key)
{
    const auto found = intents.find(keyOf(key));
    return found == intents.end() ? nullptr : found->second;
}

std::string about(const OrderRow &row)
{
    return "order " + std::to_string(row.order.value());
}

campaign::Failure compareOrders(MarketReader &reader, std::int64_t last,
                                const std::vector<TradingClient> &clients)
{
    std::vector<OrderNumber> numbers;
    for (std::int64_t number = 1; number <= last; ++number)
        numbers.emplace_back(number);
    const ByKey orders = byKey(clients, Intent::PlaceOrder);
    const ByKey revokes = byKey(clients, Intent::Revoke);
    std::size_t stored = 0;
    std::size_t revoked = 0;
    for (const OrderRow &row : reader.orders(numbers)) {
        const Intent *intent = find(orders, row.key);
        if (!intent)
            return about(row) + " was never asked for";
        if (!intent->done || intent->order != row.order.value())
            return about(row) + " is there, and its owner was told \"" + intent->said + '"';
        if (intent->collection != row.collection || intent->side != row.side
            || intent->price != row.price || intent->quantity != row.quantity)
            return about(row) + " is not what was asked for";
        ++stored;
        if (row.state != OrderState::Revoked)
            continue;
        const Intent *revoke = find(revokes, row.revokeKey);
        if (!revoke || !revoke->done || revoke->order != row.order.value())
            return about(row) + " is withdrawn, and nobody was told so";
        ++revoked;
    }
    if (stored != doneOf(orders))
        return std::to_string(doneOf(orders)) + " orders were acknowledged, "
            + std::to_string(stored) + " are there";
    if (revoked != doneOf(revokes))
        return std::to_string(doneOf(revokes)) + " withdrawals were acknowledged, "
            + std::to_string(revoked) + " are there";
    return std::nullopt;
}

/// How often the carrier's own ledger has a parcel with a word.
std::map<std::string, int> carriedOut(const std::filesystem::path &folder,
                                      const std::string &wanted)
{
    std::ifstream in(folder / "carrier.ledger");
    std::map<std::string, int> count;
    std::string id;
    for (std::string word; in >> id >> word;)
        if (word == wanted)
            ++count[id];
    return count;
}

std::vector<DeliveryRow> takesOf(MarketReader &reader, AccountId account)
{
    std::vector<DeliveryRow> all;
    RecordPage page;
    for (page.size = 200;; ++page.page) {
        const std::vector<DeliveryRow> rows = reader.deliveries(account, page);
        if (rows.empty())
            return all;
        all.insert(all.end(), rows.begin(), rows.end());
    }
}

std::string about(const DeliveryRow &row)
{
    return "request " + std::to_string(row.number.value()) + " for goods";
}

campaign::Failure compareTake(const DeliveryRow &row, const ByKey &takes)
{
    const Intent *intent = find(takes, row.key);
    if (!intent)
        return about(row) + " was never made";
    if (!intent->done || ParcelId::fromText(intent->parcel) != row.parcel)
        return about(row) + " is there, and its owner was told \"" + intent->said + '"';
    if (intent->collection != row.collection || intent->quantity != row.quantity)
        return about(row) + " is not what was asked for";
    return std::nullopt;
}

/// `gone` becomes the pieces that were sent, by collection.
campaign::Failure compareTakes(MarketReader &reader, const std::filesystem::path &folder,
                               const std::vector<TradingClient> &clients,
                               std::map<std::int64_t, Quantity> &gone, campaign::Counts &counts)
{
    const ByKey takes = byKey(clients, Intent::TakeOut);
    std::map<std::string, int> cancels; // that were acknowledged, by parcel
    for (const auto &[key, intent] : byKey(clients, Intent::TakeBack))
        cancels[intent->parcel] += intent->done ? 1 : 0;
    const auto packed = carriedOut(folder, "packed");
    const auto sent = carriedOut(folder, "sent");
    std::size_t stored = 0;
    for (const TradingClient &client : clients) {
        for (const DeliveryRow &row : takesOf(reader, client.trader().account)) {
            if (auto failure = compareTake(row, takes))
                return failure;
            ++stored;
            const std::string &parcel = find(takes, row.key)->parcel;
            const bool isCancelled = row.stage == DeliveryStage::Cancelled;
            if (isCancelled != (cancels[parcel] > 0))
                return about(row) + (isCancelled ? " is" : " is not")
                    + " cancelled, and its owner was told otherwise";
            if (cancels[parcel] > 1)
                return about(row) + " was cancelled twice";
            const bool isSent = row.stage == DeliveryStage::Sent;
            if (isSent && (packed.count(parcel) == 0 || sent.count(parcel) == 0))
                return about(row) + " is sent, and the carrier knows nothing of it";
            if (isCancelled && sent.count(parcel) != 0)
                return about(row) + " is cancelled, and the carrier has sent it";
            if (isSent)
                gone[row.collection.value()] += row.quantity;
            ++counts[isSent ? kParcelSent : isCancelled ? kParcelCancelled : kParcelWaiting];
        }
    }
    if (stored != doneOf(takes))
        return std::to_string(doneOf(takes)) + " requests for goods were acknowledged, "
            + std::to_string(stored) + " are there";
    for (const auto *steps : {&packed, &sent})
        for (const auto &[parcel, times] : *steps)
            if (times != 1)
                return "the carrier took a step twice with " + parcel;
    return std::nullopt;
}

/// What went out by the word of the bank's own ledger.
Fen paidByTheBank(const std::filesystem::path &folder)
{
    std::ifstream in(folder / "bank.ledger");
    Fen sum;
    std::string id;
    std::string way;
    std::string word;
    for (std::int64_t fen = 0; in >> id >> way >> fen >> word;)
        if (way == "out" && word == "done")
            sum += Fen(fen);
    return sum;
}

/// `gone` are the pieces that left the market, by collection.
campaign::Failure compareMoney(const Market &market, const std::filesystem::path &folder,
                               const std::vector<TradingClient> &clients,
                               const std::map<std::int64_t, Quantity> &gone)
{
    Fen paid;
    for (const auto &[key, intent] : byKey(clients, Intent::PayOut))
        if (intent->done)
            paid += intent->amount;
    if (paidByTheBank(folder) != paid)
        return "owners were told of " + std::to_string(paid.value()) + " fen out, the bank paid "
            + std::to_string(paidByTheBank(folder).value());
    const auto traders = static_cast<std::int64_t>(clients.size());
    Fen cash = market.feesEarned();
    std::map<std::int64_t, Quantity> pieces = gone;
    std::vector<HoldingView> holdings;
    for (const TradingClient &client : clients) {
        const auto account = market.account(client.trader().account);
        if (!account)
            return std::string("an account is gone");
        cash += account->available + account->frozenCash;
        market.holdingsOf(account->account, holdings);
        for (const HoldingView &holding : holdings)
            pieces[holding.collection.value()] += holding.quantity;
    }
    const Fen wanted = Fen(FundedFolder::kMoney.value() * traders) - paid;
    if (cash != wanted)
        return "there should be " + std::to_string(wanted.value()) + " fen, and there are "
            + std::to_string(cash.value());
    for (const auto &[collection, sum] : pieces)
        if (sum != Quantity(FundedFolder::kPieces.value() * traders))
            return "pieces of " + std::to_string(collection) + " are not conserved";
    return std::nullopt;
}

} // namespace

campaign::Failure compareWithStore(const std::filesystem::path &folder,
                                   const std::vector<TradingClient> &clients,
                                   campaign::Counts &counts)
{
    const std::filesystem::path file = folder / FundedFolder::kStore;
    SqliteStore store(file);
    const Recovered recovered = recoverMarket(store); // which audits it
    if (replayMarket(store).stateHash() != recovered.market.stateHash())
        return std::string("the recovered market is not what its events say");
    counts[kDeal] += recovered.market.lastDeal().value();
    MarketReader reader(file);
    if (auto failure = compareOrders(reader, recovered.market.lastOrder().value(), clients))
        return failure;
    std::map<std::int64_t, Quantity> gone;
    if (auto failure = compareTakes(reader, folder, clients, gone, counts))
        return failure;
    return compareMoney(recovered.market, folder, clients, gone);
}

} // namespace zvxtest
