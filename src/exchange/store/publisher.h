#pragma once

#include "exchange/core/event.h"
#include "exchange/store/catalogue.h"
#include "exchange/store/clock.h"
#include "exchange/store/snapshot.h"
#include "exchange/store/tables.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace zvx {

class Market;

/// How often what is published, in milliseconds, and how far back list changes are kept.
struct Cadence {
    SteadyMs list = 1'200; ///< the market list and the composite row
    SteadyMs details = 200; ///< day figures, levels and latest deals
    std::size_t history = 64; ///< list deltas
};

/**
 * Makes the snapshots of a market and decides when the next one is due.
 *
 * It collects what commands touch, and publishes it when its time has come: the first change after
 * a quiet while at once, further ones at the cadence. What turns out equal is not published, what
 * did not change is shared with the snapshot before. No thread, no clock: times are arguments.
 */
class Publisher
{
public:
    /// The last deals of a collection in the running session, oldest first.
    using DealLoader = std::function<std::vector<DealRow>(CollectionId, std::size_t limit)>;

    /// Makes the first snapshot, every version 1. `infos` stand in the order of
    /// market.collections().
    Publisher(std::vector<CatalogueType> types, std::vector<CollectionInfo> infos,
              const Market &market, const CompositeRow &composite, const DealLoader &deals,
              const Cadence &cadence = {});

    /// Notes an event; the collections that the market calls dirty come by touch() besides.
    void take(const Event &event);
    void touch(const std::vector<CollectionId> &collections);

    /// When something should be published: nothing, or a time that may lie in the past.
    std::optional<SteadyMs> due() const;

    /// Publishes what is due at `now`. The market must be in the state that is durable.
    TopicSet publish(const Market &market, const CompositeRow &composite, SteadyMs now);

    std::shared_ptr<const MarketSnapshot> snapshot() const { return m_snapshot; }

private:
    void publishCheck(MarketSnapshot &next, const Market &market, TopicSet &topics);
    void publishInfos(MarketSnapshot &next, const Market &market, TopicSet &topics);
    void publishList(MarketSnapshot &next, const Market &market, const CompositeRow &composite,
                     TopicSet &topics);
    void publishDetails(MarketSnapshot &next, const Market &market, TopicSet &topics);
    bool publishDetails(CollectionSnapshot &next, Row row, const Market &market,
                        TopicSet::Collection &topics);

    Cadence m_cadence;
    std::shared_ptr<const MarketSnapshot> m_snapshot;
    std::unordered_map<std::int64_t, Row> m_rows;
    Quantity m_listed;

    bool m_checkTouched = false;
    bool m_infosTouched = false;
    std::vector<bool> m_listTouched; ///< by Row, like the next two
    std::vector<bool> m_detailsTouched;
    std::vector<LatestDeals> m_newDeals; ///< since the last publication
    bool m_listPending = false;
    bool m_detailsPending = false;
    bool m_dealsEnded = false; ///< a session ended, and its deals with it
    std::optional<SteadyMs> m_listPublished;
    std::optional<SteadyMs> m_detailsPublished;
};

} // namespace zvx
