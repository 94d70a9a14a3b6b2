#pragma once

#include "exchange/store/catalogue.h"
#include "exchange/store/clock.h"
#include "exchange/store/marketreader.h"
#include "exchange/store/marketwriter.h"
#include "exchange/store/snapshot.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

class StateLock;
class MarketServer;

/// The state folder cannot be used; what() is fit for an operator.
class FolderError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct ExchangeOptions {
    std::filesystem::path folder; ///< state folder, made where it is missing
    InitialsFunction initials; ///< pinyin initials of names; none without it
    std::shared_ptr<Clock> clock; ///< the machine's clock without it
    std::string vfs; ///< SQLite VFS of all stores; "" is the usual one
    WriterOptions writer;
    /// The text that becomes catalogue.json where the folder has none; the embedded one without it.
    std::optional<std::string> firstCatalogue;

    /// On a writer's thread, after a publication: be short.
    std::function<void(const MarketServer &, const std::shared_ptr<const MarketSnapshot> &,
                       const TopicSet &)>
        published;
    /// On a writer's thread, after a commit and before its answers: be short.
    std::function<void(const MarketServer &, const std::vector<AccountId> &)> accountsChanged;
    /// A market ended by a fault: the process has to end, and to start again from its disk.
    std::function<void(const std::string &reason)> fatal;
    /// A line for the operator's log.
    std::function<void(const std::string &line)> notice;
};

/// One market as the service sees it.
class MarketServer
{
public:
    MarketServer(const CataloguePlatform &platform, const CatalogueMarket &market);
    ~MarketServer();

    const std::string &platform() const { return m_platform; } ///< "lc"
    const std::string &name() const { return m_name; }
    const std::string &prefix() const { return m_prefix; } ///< "/lc/youbika/"
    PartsPerMillion fee() const { return m_fee; } ///< for accounts without a rate of their own
    bool hasHistory() const { return m_history; } ///< charts show years before the first session

    MarketWriter &writer() const { return *m_writer; }
    MarketReaders &readers() const { return *m_readers; }
    std::shared_ptr<const MarketSnapshot> snapshot() const { return m_writer->snapshot(); }

private:
    friend class Exchange;
    std::string m_platform;
    std::string m_name;
    std::string m_prefix;
    PartsPerMillion m_fee;
    bool m_history;
    std::unique_ptr<MarketReaders> m_readers; ///< which the writer's store waits for
    std::unique_ptr<MarketWriter> m_writer;
};

/// A platform and its markets in the order of the catalogue.
struct Platform {
    std::string id; ///< "lc"
    std::string name;
    std::vector<MarketServer *> markets;
};

/**
 * All markets of one state folder.
 *
 * The folder holds catalogue.json, a store for each market, and the lock that keeps a second
 * service out. Constructing opens or makes all of it and brings the markets in line with the
 * catalogue: what is new is listed, what is missing is suspended, what another market listed
 * before is refused.
 * Throws FolderError, CatalogueError, StoreError or Damaged.
 */
class Exchange
{
public:
    explicit Exchange(ExchangeOptions options);
    /// Stops cleanly if that was not done.
    ~Exchange();

    /// Names one run on one state: 16 lower-case hexadecimal digits.
    const std::string &boot() const { return m_boot; }

    const std::vector<Platform> &platforms() const { return m_platforms; }
    const std::vector<std::unique_ptr<MarketServer>> &markets() const { return m_markets; }
    /// The market of a prefix such as "/lc/youbika/", or null.
    MarketServer *market(std::string_view prefix) const;

    /// Writes the port into the lock file, for those who want to attach.
    void announcePort(int port);

    /// Settles every open session of every market and opens the same date again, with the next
    /// session number. Waits until that is durable. Throws StoreError where a market ended or
    /// refused.
    void settle();

    /// Carries out what waits, writes checkpoints, closes the stores. Nobody reads them any more.
    /// Idempotent.
    void stop();

private:
    ExchangeOptions m_options;
    std::unique_ptr<StateLock> m_lock;
    std::string m_boot;
    std::vector<Platform> m_platforms;
    std::vector<std::unique_ptr<MarketServer>> m_markets;
};

} // namespace zvx
