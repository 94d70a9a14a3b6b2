#pragma once

#include "options.h"

#include "serving/seededstate.h"
#include "support/scratchfolder.h"

#include <cstdint>
#include <string>
#include <vector>

// A market in which one account has traded for years: so many orders, each of which had one deal,
// spread over trading days.
class LongPast
{
public:
    explicit LongPast(const Options &options);

    const SeededState &state() const { return m_state; }
    // Of the account whose records are asked for.
    const std::string &token() const { return m_state.traders().front().token; }

    // One of its orders.
    struct Entry {
        std::int64_t order = 0;
        std::int64_t deal = 0;
        bool isBuy = true;
        std::int64_t day = 0; // 20200101
    };
    // The oldest first.
    const std::vector<Entry> &entries() const { return m_entries; }

    static constexpr std::int64_t ordersOfDay = 4'000;

private:
    void trade(std::int64_t records);

    ScratchFolder m_folder;
    SeededState m_state;
    std::vector<Entry> m_entries;
};
