#pragma once

#include "exchange/service/account_versions.h"
#include "exchange/service/protocol.h"
#include "exchange/store/snapshot.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zvx {

/// How often each topic's JSON was made. Read from any thread.
using BuildCounters = std::array<std::atomic<std::uint64_t>, topicCount>;

/// A topic whose whole value is kept by the service itself, as JSON with its version.
struct BoardText {
    std::uint64_t version = 0;
    /// `"version":3,"data":…`
    HttpFragment text;
};

/// What one platform tells in all of its markets.
struct PlatformBoard {
    BoardText market;
    BoardText message;

    /// Replaces `text` when `data` differs from what stands in it, and counts its version up.
    static bool put(BoardText &place, std::string data);
};

/// What a poll holds, and of which collection.
struct SyncQuestion {
    /// Per topic: the version held; a topic without one is not watched.
    std::array<std::optional<std::uint64_t>, topicCount> held;
    /// The row of the current collection; without it nothing of a collection is watched ...
    std::optional<Row> row;
    /// ... but a client that named a collection which is not there is told so.
    bool unknownCollection = false;
    std::size_t limit = 10;
    /// Whose money, holdings and orders are watched; without it nothing of an account is.
    std::optional<AccountId> account;
};

/**
 * The answers of one market. Each piece of JSON is made at most once per change, when the first
 * client asks for it, and shared by all answers that hold it.
 *
 * On the server's thread only.
 */
class MarketBoard
{
public:
    MarketBoard(std::shared_ptr<const PlatformBoard> platform, BuildCounters &builds);

    void publish(std::shared_ptr<const MarketSnapshot> snapshot);
    std::optional<Row> rowOf(CollectionId id) const { return m_snapshot->rowOf(id); }

    AccountVersions &accounts() { return m_accounts; }

    /// Whether the poll has to be answered now.
    bool differs(const SyncQuestion &question) const;
    /// Appends the body of `topics`: each watched topic that differs, in brackets. Questions with
    /// the same answer share it.
    void appendTopics(const SyncQuestion &question, std::vector<HttpFragment> &out);

    /// `"version":3,"data":{…}` of a topic of the whole market.
    HttpFragment whole(Topic topic);
    /// The same of a topic of one collection; `limit` counts for Topic::Latest alone.
    HttpFragment ofCollection(Topic topic, Row row, std::size_t limit);

private:
    struct Cached {
        std::uint64_t version = 0;
        HttpFragment text;
    };
    struct CachedCollection {
        Cached item;
        Cached trade;
        std::uint64_t latestVersion = 0;
        std::map<std::size_t, HttpFragment> latest;
    };

    /// All that the body of `topics` depends on: of each topic that is told which version, and then
    /// the list that is held, the row and the limit.
    using TopicsKey = std::array<std::uint64_t, topicCount + 3>;

    TopicsKey keyOf(const SyncQuestion &question) const;
    std::vector<HttpFragment> joinTopics(const SyncQuestion &question);
    bool isTold(Topic topic, const SyncQuestion &question) const;
    std::uint64_t version(Topic topic, const SyncQuestion &question) const;
    bool isWatched(Topic topic, const SyncQuestion &question) const;
    HttpFragment entry(Topic topic, const SyncQuestion &question);
    HttpFragment listEntry(std::uint64_t base);
    template <class Write>
    HttpFragment build(Topic topic, std::uint64_t version, const Write &write);

    std::shared_ptr<const PlatformBoard> m_platform;
    BuildCounters &m_builds;
    std::shared_ptr<const MarketSnapshot> m_snapshot;
    AccountVersions m_accounts;
    std::array<Cached, topicCount> m_whole;
    std::vector<CachedCollection> m_collections;
    /// Ways to the newest list, by the version that they start from.
    std::map<std::uint64_t, HttpFragment> m_changes;
    /// Answers to polls since the last publication.
    std::map<TopicsKey, std::vector<HttpFragment>> m_topics;
};

} // namespace zvx
