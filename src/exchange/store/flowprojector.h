#pragma once

#include "exchange/core/event.h"
#include "exchange/store/flows.h"

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

namespace zvx {

/// The flows that a store holds already.
class StoredFlows
{
public:
    virtual ~StoredFlows() = default;

    /// Number of the last flow, 0 before the first.
    virtual std::int64_t lastFlow() = 0;
    virtual FlowPlaces flowPlaces(AccountId account) = 0;
    virtual std::optional<FlowRow> flowOf(TransferNumber transfer) = 0;
};

/// The part of the projection that tells of money in and out: transfers, and what came and went
/// without a bank.
class FlowProjector
{
public:
    /// Goes on behind what `stored` holds, which may be null for nothing and has to outlive this.
    FlowProjector(TradingDay day, StoredFlows *stored);

    /// Throws Damaged for the end of a transfer that nobody began.
    void take(const Event &event);
    /// The flows that the events since the last call changed, by rising number.
    std::vector<FlowRow> finish();

private:
    FlowRow begin(AccountId account, bool incoming, Fen amount, TimeMs at, Fen balance);
    void end(const TransferEnded &event);

    StoredFlows *m_stored;
    TradingDay m_day;
    std::int64_t m_last;
    std::unordered_map<std::int64_t, FlowPlaces> m_places; ///< by account
    std::unordered_map<std::int64_t, FlowRow> m_waiting; ///< by transfer, those that began since
    std::map<std::int64_t, FlowRow> m_touched; ///< by number, since the last finish()
};

} // namespace zvx
