#include "exchange/store/pasttrading.h"

#include "exchange/store/calendar.h"
#include "exchange/store/catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace zvx {
namespace {

IssueRow issue(std::int64_t id, std::int64_t close, std::int64_t issued,
               std::int64_t limit = kDefaultLimit.value())
{
    return {CollectionId(id), Fen(close), Quantity(issued), PartsPerMillion(limit)};
}

/// All listings of the catalogue that the program brings along, and some at the edges.
std::vector<IssueRow> issues()
{
    std::vector<IssueRow> all;
    const Catalogue catalogue = Catalogue::parse(Catalogue::embeddedText(), "embedded");
    for (const CataloguePlatform &platform : catalogue.platforms())
        for (const CatalogueMarket &market : platform.markets)
            for (const CatalogueCollection &entry : market.collections)
                all.push_back({entry.id, entry.previousClose, entry.listed, market.limit});
    for (const std::int64_t close : {1, 2, 4, 5, 6, 9, 10, 11, 15, 999, 13'107'199})
        for (const std::int64_t limit : {1, 4'999, 10'000, 100'000, 500'000, 999'999})
            for (const std::int64_t issued : {std::int64_t(1), kAmountBound / close})
                all.push_back(issue(77, close, issued, limit));
    return all;
}

/// What holds for a history of whatever listing; the first thing that does not, in words.
std::string fault(const IssueRow &listing)
{
    const std::vector<Bar> bars = pastTrading(listing);
    if (bars.empty() || bars.front().day != TradingDay(20'160'104)
        || bars.back().day != TradingDay(20'191'231))
        return "does not go from the first to the last day";
    if (bars.back().close != listing.previousClose)
        return "does not end at the listing's close";
    for (std::size_t i = 0; i < bars.size(); ++i) {
        const Bar &bar = bars[i];
        const std::string day = std::to_string(bar.day.value());
        if (weekday(bar.day) > 4)
            return day + " is a weekend";
        if (i > 0) {
            const std::int64_t step = dayNumber(bar.day) - dayNumber(bars[i - 1].day);
            if (step != (weekday(bar.day) == 0 ? 3 : 1))
                return day + " does not follow the weekday before";
            const PriceLimits range = priceLimits(bars[i - 1].close, listing.limit);
            if (bar.low < range.lower || bar.high > range.upper)
                return day + " leaves its limits";
        }
        if (bar.low < Fen(1) || bar.high >= Fen(kPriceBound) || bar.open < bar.low
            || bar.open > bar.high || bar.close < bar.low || bar.close > bar.high)
            return day + " has prices that do not fit each other";
        if (bar.volume < Quantity(1) || bar.volume > listing.issued)
            return day + " has a volume without sense";
        const Wide least = Wide(bar.low.value()) * bar.volume.value();
        const Wide most = Wide(bar.high.value()) * bar.volume.value();
        if (bar.amount.value() < least || bar.amount.value() > most)
            return day + " has an amount without sense";
    }
    return "";
}

TEST(PastTrading, IsSoundForEveryListing)
{
    for (const IssueRow &listing : issues())
        ASSERT_EQ(fault(listing), "")
            << listing.collection.value() << " close " << listing.previousClose.value() << " limit "
            << listing.limit.value();
}

TEST(PastTrading, IsTheSameEveryTimeAndDiffersByListing)
{
    const auto closes = [](const IssueRow &listing) {
        std::vector<std::int64_t> all;
        for (const Bar &bar : pastTrading(listing))
            all.push_back(bar.close.value());
        return all;
    };
    const auto first = closes(issue(1001, 50'800, 12'000));
    EXPECT_EQ(closes(issue(1001, 50'800, 12'000)), first);
    EXPECT_NE(closes(issue(1002, 50'800, 12'000)), first);
    EXPECT_NE(closes(issue(1001, 50'801, 12'000)), first);
    EXPECT_NE(closes(issue(1001, 50'800, 12'001)), first);
}

/// A chart that was drawn from one release is drawn the same from the next.
TEST(PastTrading, StaysWhatItWas)
{
    const std::vector<Bar> bars = pastTrading(issue(1001, 50'800, 12'000));
    ASSERT_EQ(bars.size(), 1'042u);
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const Bar &bar : bars) {
        for (const std::int64_t figure :
             {bar.day.value(), bar.open.value(), bar.high.value(), bar.low.value(),
              bar.close.value(), bar.volume.value(), bar.amount.value()})
            hash = (hash ^ static_cast<std::uint64_t>(figure)) * 0x100000001b3;
    }
    EXPECT_EQ(hash, 7726877433769610831u);
}

TEST(PastTrading, LooksLikeTrading)
{
    std::size_t rising = 0;
    std::size_t moving = 0;
    std::size_t days = 0;
    for (const IssueRow &listing : issues()) {
        if (listing.previousClose < Fen(1'000) || listing.collection == CollectionId(77))
            continue;
        const std::vector<Bar> bars = pastTrading(listing);
        std::set<std::int64_t> closes;
        for (const Bar &bar : bars) {
            closes.insert(bar.close.value());
            rising += bar.close > bar.open ? 1 : 0;
            moving += bar.close != bar.open ? 1 : 0;
        }
        days += bars.size();
        EXPECT_GT(closes.size(), 100u) << listing.collection.value();
        const auto extremes = std::minmax_element(closes.begin(), closes.end());
        EXPECT_GT(*extremes.first, listing.previousClose.value() / 8);
        EXPECT_LT(*extremes.second, listing.previousClose.value() * 4);
    }
    EXPECT_GT(moving, days * 8 / 10);
    EXPECT_GT(rising, moving * 4 / 10);
    EXPECT_LT(rising, moving * 6 / 10);
}

TEST(PastTrading, HasNothingOfACollectionWithoutPieces)
{
    EXPECT_TRUE(pastTrading(issue(5, 100, 0)).empty());
}

} // namespace
} // namespace zvx
