#pragma once

#include "exchange/core/types.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zvx {

class Exchange;
class MarketServer;

/**
 * What the demo account of a folder is given: once in each market 1,000,000.00 and up to a hundred
 * pieces of some fifty collections.
 *
 * The file `demo.gifts` in the state folder marks a folder that was made for a demonstration, and
 * holds a line for each market: its prefix, the session in which the gifts began, and "begun" or
 * "done". Gifts carry fixed action keys, so that a repetition after an interruption gives nothing
 * twice, as long as the market still knows the keys; later it is left at what was given.
 */
class DemoGifts
{
public:
    static constexpr const char *fileName = "demo.gifts";

    /// `folder` has to exist. Reads the mark; throws std::runtime_error with one sentence where it
    /// cannot be read.
    explicit DemoGifts(std::filesystem::path folder);

    /// Marks a folder that holds no exchange yet, durably; does nothing to another one. Call it
    /// before the exchange is opened.
    void markNewFolder();

    /// Whether the folder was made for a demonstration.
    bool isMarked() const { return m_isMarked; }

    /// The demo account of a market's platform, or nothing where there is none.
    using Account = std::function<std::optional<AccountId>(const MarketServer &)>;
    using Notice = std::function<void(const std::string &line)>;

    /// Gives what was not given yet, and returns when it is durable. Call it before anybody else
    /// trades: pieces are given out of what is issued. Throws StoreError where a market ended, and
    /// FolderError where the mark cannot be written.
    void give(const Exchange &exchange, const Account &account, const Notice &notice);

private:
    struct Gift {
        std::int64_t session = 0;
        bool isDone = false;
    };

    void giveIn(const MarketServer &market, AccountId account, const Notice &notice) const;
    void read();
    void write() const;

    std::filesystem::path m_folder;
    bool m_isMarked = false;
    std::map<std::string, Gift> m_gifts; ///< by prefix
};

} // namespace zvx
