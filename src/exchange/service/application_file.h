#pragma once

#include "exchange/core/types.h"
#include "exchange/service/watched_file.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

/// What can be applied for.
struct OpenIssue {
    CollectionId collection; ///< under which it is listed, or will be
    std::string code;
    std::string name;
    Fen price;
    Quantity quantity; ///< one account may apply for
    TradingDay from; ///< both included
    TradingDay to;
};

/// As the wire has them.
enum class ApplicationState : std::uint8_t { Pending = 0, Granted = 1, Missed = 2, Withdrawn = 3 };

/// One application of one account.
struct Application {
    std::int64_t number = 0; ///< unique in its market
    TimeMs time;
    TradingDay day; ///< of `time`
    CollectionId collection;
    std::string code;
    std::string name;
    Fen price;
    Quantity quantity; ///< applied for
    std::optional<Quantity> granted; ///< nothing before the draw
    ApplicationState state = ApplicationState::Pending;
};

/// What an operator wrote down for one market.
struct MarketApplications {
    std::vector<OpenIssue> open; ///< in the order of the file, on whatever day
    std::map<std::string, std::vector<Application>, std::less<>> byPerson; ///< phone or number

    /// What can be applied for on a trading day.
    std::vector<const OpenIssue *> openOn(TradingDay day) const;
    /// The applications of an account, newest first.
    std::vector<const Application *> of(std::string_view phone, std::string_view account) const;
};

/**
 * What can be applied for, and who applied, as an operator keeps it in `applications.json` of the
 * state folder: applying is done elsewhere. Prices are in fen, times in UTC+8.
 *
 *     {"format": 1, "markets": {"/lc/youbika/": {
 *       "open": [{"collection": 2900, "code": "291001", "name": "…", "price": 1000,
 *                 "quantity": 200, "from": "2020-01-01", "to": "2020-01-07"}],
 *       "applications": [
 *         {"number": 7001, "phone": "13800000000", "time": "2020-01-01 09:30:00",
 *          "collection": 2900, "code": "291001", "name": "…", "price": 1000, "quantity": 100,
 *          "state": "granted", "granted": 20}]}}}
 *
 * An application names its account by "phone" or, as "account", by its number. "granted" stands
 * there where the state is "granted"; the others are "pending", "missed" and "withdrawn".
 *
 * The file is read again when it changes, checked as a whole, and used whole or not at all.
 */
class ApplicationFile
{
public:
    static constexpr const char *fileName = "applications.json";
    static constexpr std::size_t fileBound = 2048 * 1024; ///< bytes
    static constexpr std::size_t issueBound = 200; ///< of one market
    static constexpr std::size_t applicationBound = 10'000; ///< of one market

    /// `prefixes` are those of the markets that there are.
    ApplicationFile(const std::filesystem::path &folder, std::vector<std::string> prefixes);

    /// Looks at the file. A file that is not right leaves everything as it was and sets `fault` to
    /// one sentence for the log.
    void refresh(std::string &fault);

    /// Of one market; never null, and stays what it is when the file changes.
    std::shared_ptr<const MarketApplications> of(const std::string &prefix) const;

private:
    using Markets = std::map<std::string, std::shared_ptr<const MarketApplications>>;

    WatchedFile m_file;
    std::vector<std::string> m_prefixes;
    Markets m_markets;
};

} // namespace zvx
