#pragma once

#include "exchange/store/bars.h"
#include "exchange/store/tables.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zvx {

/// What an account has in one market, as of one commit.
struct AccountState {
    CashRow cash; ///< all zeros where nobody opened the account in this market
    std::vector<HoldingView> holdings; ///< by rising collection
};

/// The fees of an account's later orders in one market.
struct AccountFees {
    PartsPerMillion fee;
    std::vector<std::pair<CollectionId, PartsPerMillion>> special; ///< by rising collection
};

/// A collection's running session by minutes, as of one commit.
struct SessionMinutes {
    RunningRow running;
    std::vector<PhaseRow> phases; ///< of the session, in their order
    std::optional<TimeMs> first; ///< begin of the session's first minute
    std::vector<MinuteRow> minutes; ///< the newest ones, oldest first
};

/// All sessions of a collection, as of one commit.
struct TradedSessions {
    IssueRow issue;
    Sequence running; ///< number of the running session
    std::vector<Bar> bars; ///< of each session in which was dealt, in their order
};

/**
 * Reads one market's tables beside the writer, on a connection of its own that cannot change them.
 *
 * Each call is one short transaction: it sees everything that was acknowledged before it began, and
 * all of it as of one commit. One thread at a time. Everything throws StoreError.
 */
class MarketReader
{
public:
    /// The file stands open in a SqliteStore of this process.
    explicit MarketReader(const std::filesystem::path &file, const std::string &vfs = {});
    ~MarketReader();

    AccountState account(AccountId id);
    /// Nothing where nobody opened the account in this market.
    std::optional<AccountFees> fees(AccountId id);
    /// Those of the orders that exist, in the order of `numbers`.
    std::vector<OrderRow> orders(const std::vector<OrderNumber> &numbers);

    // Nothing where the market does not list the collection.
    /// Minutes that begin at `from` or later, the newest `most` of them.
    std::optional<SessionMinutes> minutes(CollectionId id, TimeMs from, std::size_t most);
    std::optional<TradedSessions> sessions(CollectionId id);
    /// A page of the deals of the running session, oldest first: page 1 holds the newest `size` of
    /// them, page 2 those before, and so on.
    std::optional<std::vector<DealRow>> deals(CollectionId id, std::int64_t page,
                                              std::int64_t size);

    // Some of an account's records, the newest first. Pages past the end have none.
    /// Of the days that the page asks for.
    std::vector<OrderRow> ordersOf(AccountId account, const RecordPage &page);
    std::vector<AccountDeal> dealsOf(AccountId account, const RecordPage &page);
    std::vector<FlowRow> flows(AccountId account, const RecordPage &page);
    /// Of the running session; days do not matter.
    std::vector<OrderRow> ordersOfSession(AccountId account, const RecordPage &page);
    /// Those that are open; days and kind do not matter.
    std::vector<OrderRow> openOrders(AccountId account, const RecordPage &page);

    /// What an account dealt in the running session, by rising collection.
    std::vector<GatherRow> gathers(AccountId account);
    /// Those that wait for the bank, the oldest first.
    std::vector<FlowRow> waitingFlows();
    /// The newest flow that began under a key, or the one of a transfer.
    std::optional<FlowRow> flowOf(AccountId account, ActionKey key);
    std::optional<FlowRow> flowOf(TransferNumber transfer);
    /// The newest transfers one way that began at `since` or later, at most `most` of them.
    FlowSum flowSum(AccountId account, bool incoming, TimeMs since, std::size_t most);

    /// Some of an account's deliveries, the newest first; of all kinds, whatever the page names.
    std::vector<DeliveryRow> deliveries(AccountId account, const RecordPage &page);
    /// Those that are under way, the oldest first.
    std::vector<DeliveryRow> deliveriesUnderWay();
    /// The one that was asked for under a key, or the one of a parcel.
    std::optional<DeliveryRow> deliveryOf(AccountId account, ActionKey key);
    std::optional<DeliveryRow> deliveryOf(ParcelId parcel);

private:
    class Connection;
    std::unique_ptr<Connection> m_connection;
};

/// The readers of one market: as many as threads read at the same time, each opened when it is
/// needed first. From any thread.
class MarketReaders
{
public:
    MarketReaders(std::filesystem::path file, std::string vfs);
    ~MarketReaders();

    /// What `work` makes of a reader. A reader that threw is not used again.
    template <typename Work>
    auto read(const Work &work)
    {
        const Visit visit(*this);
        std::unique_ptr<MarketReader> reader = take();
        auto result = work(*reader);
        give(std::move(reader));
        return result;
    }

    /// Waits until the reads that are under way have ended; those that come meanwhile wait, too.
    /// Gives up on reads that take longer than `kDrainTime`.
    void drain();
    static constexpr std::chrono::milliseconds kDrainTime{20};

    /// Closes the readers, so that the store can be closed after them; none is reading any more.
    void close();

private:
    /// One read from its beginning to its end.
    class Visit
    {
    public:
        explicit Visit(MarketReaders &readers) : m_readers(readers) { m_readers.enter(); }
        ~Visit() { m_readers.leave(); }
        Visit(const Visit &) = delete;
        Visit &operator=(const Visit &) = delete;

    private:
        MarketReaders &m_readers;
    };

    void enter();
    void leave();
    std::unique_ptr<MarketReader> take();
    void give(std::unique_ptr<MarketReader> reader);

    std::filesystem::path m_file;
    std::string m_vfs;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_reading = 0;
    bool m_draining = false;
    std::vector<std::unique_ptr<MarketReader>> m_idle;
};

} // namespace zvx
