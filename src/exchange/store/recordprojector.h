#pragma once

#include "exchange/core/event.h"
#include "exchange/core/market.h"
#include "exchange/store/tables.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zvx {

/// The records by account that a store holds already.
class StoredRecords
{
public:
    virtual ~StoredRecords() = default;

    virtual std::optional<OrderRow> order(OrderNumber number) = 0;
    virtual std::optional<RecordRow> records(AccountId account) = 0;
    virtual std::optional<GatherRow> gather(AccountId account, CollectionId collection) = 0;
    virtual HoldingView holding(AccountId account, CollectionId collection) = 0;
};

/// The part of the projection that tells an account of its own orders and deals: in which order
/// they came, and what the deals of a session come to.
class RecordProjector
{
public:
    /// Goes on behind what `stored` holds, which may be null for nothing and has to outlive this.
    RecordProjector(const Market &market, StoredRecords *stored);

    /// Takes in what is neither an order nor a deal.
    void take(const Event &event);
    /// Appends an order to its account's list, and gives it its links.
    void add(OrderRow &row);
    /// Appends a deal to the lists of both accounts, counts it in their sums, and gives it its
    /// links. Throws Damaged for a deal of an account with itself.
    void add(DealRow &row);

    /// Adds what changed since the last call; `market` has taken in the same events. Throws Damaged
    /// where it holds other pieces than they come to.
    void finish(const Market &market, TableUpdate &update);

private:
    using Place = std::pair<std::int64_t, std::int64_t>; ///< account, collection

    /// What an account holds, while the events go by.
    struct Held {
        Quantity quantity;
        Fen cost;
    };

    RecordRow &recordsOf(AccountId account);
    RecordLinks append(AccountId account, RecordList list, Side side, std::int64_t number);
    Held &held(AccountId account, CollectionId collection);
    GatherRow &gathered(AccountId account, CollectionId collection);
    void buy(const Deal &deal);
    void sell(const Deal &deal);

    StoredRecords *m_stored;
    TradingDay m_day;
    Sequence m_session;
    std::unordered_map<std::int64_t, RecordRow> m_records; ///< by account
    std::map<Place, Held> m_holdings; ///< those that changed since this was made
    std::map<Place, GatherRow> m_gathers; ///< of the running session

    // Since the last finish().
    std::set<std::int64_t> m_touchedAccounts;
    std::set<Place> m_touchedHoldings;
    std::set<Place> m_touchedGathers;
    std::vector<RecordRow> m_endedDays;
    std::vector<GatherRow> m_endedGathers; ///< of sessions that ended
    std::vector<MilestoneRow> m_milestones;
};

} // namespace zvx
