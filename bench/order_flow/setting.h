#pragma once

#include "options.h"
#include "trader.h"

#include "exchange/store/catalogue.h"
#include "serving/seededstate.h"
#include "support/scratchfolder.h"

#include <filesystem>
#include <string>
#include <vector>

// One market with 256 signed-in traders, and copies of it, so that every way to store orders begins
// with the same.
class Setting
{
public:
    static constexpr std::size_t clients = 256;

    explicit Setting(const Options &options);

    const SeededState &state() const { return m_state; }
    const zvx::CatalogueMarket &market() const { return m_market; }
    std::filesystem::path file(const std::string &name) const { return m_folder.path() / name; }
    // A copy of the market's store as it was before the first order.
    std::filesystem::path copy(const std::string &name) const;
    // The same ones each time.
    std::vector<Trader> traders() const;

private:
    ScratchFolder m_folder;
    SeededState m_state;
    std::filesystem::path m_untouched;
    zvx::CatalogueMarket m_market;
    std::uint64_t m_seed;
};
