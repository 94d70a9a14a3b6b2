#pragma once

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
