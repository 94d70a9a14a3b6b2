#pragma once

#include "exchange/store/tables.h"

#include <cstdint>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace zvx {

class Market;

/**
 * The part of the projection that charts and pages of deals are made of: the places of deals, the
 * minutes, each collection's running session, and when the market was open.
 *
 * A commit writes one row for each minute and one for each collection in which it dealt.
 */
class ChartProjector
{
public:
    /// Goes on behind what the store holds; `market` is as of its last command.
    explicit ChartProjector(const Market &market);

    /// Takes in what is no deal.
    void take(const Event &event);
    /// Takes a deal in, and gives its row with its place among those of its collection.
    DealRow add(const Deal &deal);

    /// Adds what the events since the last call changed; `market` has taken in the same events.
    void finish(const Market &market, TableUpdate &update);

private:
    Sequence m_session;
    bool m_open;
    std::unordered_map<std::int64_t, std::int64_t>
        m_counts; ///< deals of the session, by collection

    // Since the last finish(), sorted so that the same events give the same writes.
    std::vector<IssueRow> m_issues;
    std::vector<PhaseRow> m_phases;
    std::map<std::tuple<std::int64_t, std::int64_t, std::int64_t>, MinuteRow>
        m_minutes; ///< collection, session, begin
    std::set<std::int64_t> m_touched; ///< collections whose running session changed
};

} // namespace zvx
