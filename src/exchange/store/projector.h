#pragma once

#include "exchange/store/chartprojector.h"
#include "exchange/store/compositeindex.h"
#include "exchange/store/deliveryprojector.h"
#include "exchange/store/flowprojector.h"
#include "exchange/store/recordprojector.h"
#include "exchange/store/tables.h"

#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zvx {

class Market;

/// The rows that a projection goes on from.
class StoredRows : public StoredFlows, public StoredRecords, public StoredDeliveries
{
};

/**
 * Turns events into rows of the tables. The same events give the same rows, whether they come from
 * commands right now or from the store while the tables are made anew.
 */
class Projector
{
public:
    /// Goes on behind what is stored, all of it as of the same command. `stored` is null where that
    /// is nothing, and has to outlive this.
    Projector(const Market &market, const std::optional<CompositeRow> &composite,
              StoredRows *stored);

    /// Takes one event in. Throws Damaged for a deal of an order that nobody placed.
    void take(const Event &event);

    /// What the events since the last call changed; `market` has taken in the same events.
    TableUpdate finish(const Market &market);

    const CompositeIndex &composite() const { return m_composite; }

private:
    OrderRow &order(OrderNumber number);
    void fill(OrderNumber number, const Deal &deal, Side side);
    void sign(const ActionAnswered &answered);

    StoredRows *m_stored;
    Sequence m_session;
    CompositeIndex m_composite;
    ChartProjector m_charts;
    FlowProjector m_flows;
    DeliveryProjector m_deliveries;
    RecordProjector m_records;
    /// Open orders, and those that ended since the last finish().
    std::unordered_map<std::int64_t, OrderRow> m_orders;

    // Touched since the last finish(), sorted so that the same events give the same writes.
    std::set<std::int64_t> m_touchedOrders;
    std::set<std::int64_t> m_touchedAccounts;
    std::set<std::pair<std::int64_t, std::int64_t>> m_touchedHoldings; ///< account, collection
    std::map<std::pair<std::int64_t, std::int64_t>, PartsPerMillion> m_rates; ///< the same pair
    std::vector<OrderNumber> m_revoked; ///< in their order
    std::vector<DealRow> m_deals;
    std::vector<DayRow> m_days;
    std::vector<CompositeRow> m_endedComposites;
    bool m_compositeChanged = false;
};

} // namespace zvx
