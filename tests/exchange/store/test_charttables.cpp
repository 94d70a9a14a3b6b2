#include "exchange/store/bars.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketreader.h"
#include "exchange/store/minutes.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <random>
#include <thread>

namespace zvx {
namespace {

using test::kMorning;
using test::RandomTrading;
using test::Scribe;
using test::TempFolder;

constexpr std::int64_t kMinute = 60'000;

PlaceOrder order(std::int64_t account, Side side, std::int64_t price, std::int64_t quantity)
{
    PlaceOrder place;
    place.account = AccountId(account);
    place.collection = CollectionId(1100);
    place.side = side;
    place.price = Fen(price);
    place.quantity = Quantity(quantity);
    return place;
}

/// A market on its file, and its reader. Accounts 1 and 2 have money and pieces of 1100, which
/// trades at 9.00 to 11.00.
class Floor
{
public:
    Floor() : scribe(store, Market())
    {
        scribe.remember = true;
        scribe.carryOut(test::listing(test::smallMarket()));
        for (const std::int64_t id : {1, 2})
            scribe.carryOut(
                {OpenAccount{AccountId(id), kDefaultFee, {}},
                 Deposit{AccountId(id), Fen(1'000'000'000), {}},
                 GrantHolding{AccountId(id), CollectionId(1100), Quantity(5'000), Fen(1'000), {}}});
    }

    /// One deal, whose label is `at` milliseconds behind kMorning.
    void deal(std::int64_t at, std::int64_t price, std::int64_t quantity)
    {
        scribe.now = TimeMs(kMorning.value() + at);
        scribe.carryOut(
            {order(1, Side::Sell, price, quantity), order(2, Side::Buy, price, quantity)});
    }
    void settle() { scribe.carryOut({SettleDay{TradingDay(20'200'101)}}); }

    /// "minute last volume amount", with minutes counted from kMorning.
    std::vector<std::string> minutes(std::int64_t from = 0, std::size_t most = 100)
    {
        std::vector<std::string> found;
        const auto session
            = reader.minutes(CollectionId(1100), TimeMs(kMorning.value() + from), most);
        for (const MinuteRow &row : session->minutes)
            found.push_back(std::to_string((row.begin.value() - kMorning.value()) / kMinute) + " "
                            + std::to_string(row.last.value()) + " "
                            + std::to_string(row.volume.value()) + " "
                            + std::to_string(row.amount.value()));
        return found;
    }

    const TempFolder folder;
    SqliteStore store{folder / "m.market"};
    MarketReader reader{folder / "m.market"};
    Scribe scribe;
};

using Lines = std::vector<std::string>;

TEST(ChartTables, AMinuteHoldsItsLastPriceAndItsSums)
{
    Floor floor;
    floor.deal(0, 1'000, 2);
    floor.deal(59'999, 1'010, 3);
    floor.deal(60'000, 990, 1);
    floor.deal(5 * kMinute + 17, 1'020, 4);
    EXPECT_EQ(floor.minutes(), (Lines{"0 1010 5 5030", "1 990 1 990", "5 1020 4 4080"}));
    EXPECT_EQ(floor.minutes(kMinute), (Lines{"1 990 1 990", "5 1020 4 4080"}));
    EXPECT_EQ(floor.minutes(kMinute + 1), (Lines{"5 1020 4 4080"}));
    EXPECT_EQ(floor.minutes(0, 2), (Lines{"1 990 1 990", "5 1020 4 4080"})) << "the newest";
    EXPECT_EQ(floor.minutes(6 * kMinute), Lines());
}

TEST(ChartTables, AClockThatIsSetBackAddsToTheMinuteThatItShows)
{
    Floor floor;
    floor.deal(10 * kMinute, 1'000, 1);
    floor.deal(2 * kMinute, 1'010, 2);
    floor.deal(10 * kMinute + 5, 990, 3);
    floor.deal(2 * kMinute + 9, 980, 4);
    EXPECT_EQ(floor.minutes(), (Lines{"2 980 6 5940", "10 990 4 3970"}));
    EXPECT_EQ(
        floor.reader.minutes(CollectionId(1100), TimeMs(kMorning.value() + 9 * kMinute), 9)->first,
        TimeMs(kMorning.value() + 2 * kMinute))
        << "the first minute is known when it is not asked for";
}

TEST(ChartTables, TellTheRunningSessionAlone)
{
    Floor floor;
    floor.deal(0, 1'000, 2);
    floor.deal(kMinute, 1'050, 2);
    floor.settle();
    EXPECT_EQ(floor.minutes(), Lines());
    auto session = floor.reader.minutes(CollectionId(1100), TimeMs(0), 10);
    EXPECT_EQ(session->running.session, Sequence(2));
    EXPECT_EQ(session->running.previousClose, Fen(1'050));
    EXPECT_EQ(session->running.deals, 0);
    EXPECT_FALSE(session->first);
    EXPECT_TRUE(floor.reader.deals(CollectionId(1100), 1, 10)->empty());

    floor.deal(kMinute + 1, 1'100, 7);
    EXPECT_EQ(floor.minutes(), (Lines{"1 1100 7 7700"})) << "the same minute of another session";
    session = floor.reader.minutes(CollectionId(1100), TimeMs(0), 10);
    EXPECT_EQ(session->running.open, Fen(1'100));
    EXPECT_EQ(session->running.volume, Quantity(7));
    EXPECT_EQ(session->running.day, TradingDay(20'200'101));
    EXPECT_EQ(floor.reader.deals(CollectionId(1100), 1, 10)->size(), 1u);
}

TEST(ChartTables, RememberWhenTheMarketWasOpen)
{
    Floor floor;
    const auto phases = [&floor] {
        Lines found;
        const auto session = floor.reader.minutes(CollectionId(1100), TimeMs(0), 10);
        for (const PhaseRow &row : session->phases)
            found.push_back(std::to_string(row.session.value()) + (row.open ? " open " : " closed ")
                            + std::to_string(row.at.value() - kMorning.value()));
        return found;
    };
    EXPECT_EQ(phases(), (Lines{"1 open 0"}));
    floor.scribe.now = TimeMs(kMorning.value() + 100);
    floor.scribe.carryOut({SetPhase{false}});
    floor.scribe.now = TimeMs(kMorning.value() + 200);
    floor.scribe.carryOut({SetPhase{true}, SetPhase{true}});
    EXPECT_EQ(phases(), (Lines{"1 open 0", "1 closed 100", "1 open 200"}));
    floor.scribe.now = TimeMs(kMorning.value() + 300);
    floor.settle();
    EXPECT_EQ(phases(), (Lines{"2 open 300"})) << "an open market begins the next session open";
    floor.scribe.carryOut({SetPhase{false}});
    floor.settle();
    EXPECT_EQ(phases(), Lines()) << "and a closed one closed";
    floor.scribe.carryOut({SetPhase{true}});
    EXPECT_EQ(phases(), (Lines{"3 open 300"}));
}

TEST(ChartTables, ACollectionThatIsNotListedHasNothing)
{
    Floor floor;
    EXPECT_FALSE(floor.reader.minutes(CollectionId(2100), TimeMs(0), 10));
    EXPECT_FALSE(floor.reader.sessions(CollectionId(2100)));
    EXPECT_FALSE(floor.reader.deals(CollectionId(2100), 1, 10));
    const auto listed = floor.reader.sessions(CollectionId(1101));
    ASSERT_TRUE(listed);
    EXPECT_TRUE(listed->bars.empty());
    EXPECT_EQ(listed->issue.previousClose, Fen(1'005));
    EXPECT_EQ(listed->issue.issued, Quantity(20'000));
    EXPECT_EQ(listed->issue.limit, kDefaultLimit);
    EXPECT_EQ(listed->running, Sequence(1));
}

TEST(ChartTables, PagesCountFromTheNewestDeal)
{
    Floor floor;
    for (std::int64_t i = 1; i <= 11; ++i)
        floor.deal(i, 1'000, i);
    const auto page = [&floor](std::int64_t number, std::int64_t size) {
        std::string quantities;
        const auto deals = floor.reader.deals(CollectionId(1100), number, size);
        for (const DealRow &row : *deals)
            quantities += " " + std::to_string(row.deal.quantity.value());
        return quantities;
    };
    EXPECT_EQ(page(1, 4), " 8 9 10 11");
    EXPECT_EQ(page(2, 4), " 4 5 6 7");
    EXPECT_EQ(page(3, 4), " 1 2 3");
    EXPECT_EQ(page(4, 4), "");
    EXPECT_EQ(page(1, 11), page(1, 5'000));
    EXPECT_EQ(page(1, 11), " 1 2 3 4 5 6 7 8 9 10 11");
    EXPECT_EQ(page(11, 1), " 1");
    EXPECT_EQ(page(12, 1), "");
    EXPECT_EQ(page(1, 0), "");
    EXPECT_EQ(page(INT32_MAX, 5'000), "");
    EXPECT_EQ(page(INT64_MAX, INT64_MAX), "") << "no product leaves its bounds";
}

/// What charts tell of one collection, from all events and in the slowest way.
struct Reference {
    struct Minute {
        std::int64_t last = 0;
        std::int64_t volume = 0;
        std::int64_t amount = 0;
    };
    struct Session {
        TradingDay day;
        std::vector<Deal> deals;
    };

    Reference(const std::vector<Event> &events, CollectionId id)
    {
        sessions.push_back({TradingDay(20'200'101), {}});
        for (const Event &event : events) {
            if (const auto *deal = std::get_if<Deal>(&event)) {
                if (deal->collection == id)
                    sessions.back().deals.push_back(*deal);
            } else if (const auto *settled = std::get_if<DaySettled>(&event)) {
                sessions.push_back({settled->day, {}});
            } else if (const auto *listed = std::get_if<CollectionListed>(&event)) {
                if (listed->collection == id)
                    close = listed->previousClose;
            }
        }
        for (std::size_t i = 0; i + 1 < sessions.size(); ++i) {
            if (!sessions[i].deals.empty())
                close = sessions[i].deals.back().price;
        }
    }

    std::map<std::int64_t, Minute> minutes() const
    {
        std::map<std::int64_t, Minute> found;
        for (const Deal &deal : sessions.back().deals) {
            Minute &minute = found[deal.at.value() / kMinute * kMinute];
            minute.last = deal.price.value();
            minute.volume += deal.quantity.value();
            minute.amount += deal.price.value() * deal.quantity.value();
        }
        return found;
    }

    std::vector<Session> sessions;
    Fen close; ///< before the running session
};

void expectEqual(MarketReader &reader, const Reference &reference, CollectionId id)
{
    const auto session = reader.minutes(id, TimeMs(0), 1'000'000);
    ASSERT_TRUE(session);
    const auto minutes = reference.minutes();
    ASSERT_EQ(session->minutes.size(), minutes.size());
    std::size_t i = 0;
    for (const auto &[begin, minute] : minutes) {
        const MinuteRow &row = session->minutes[i++];
        ASSERT_EQ(row.begin.value(), begin);
        ASSERT_EQ(row.last.value(), minute.last);
        ASSERT_EQ(row.volume.value(), minute.volume);
        ASSERT_EQ(row.amount.value(), minute.amount);
    }
    const auto &deals = reference.sessions.back().deals;
    EXPECT_EQ(session->running.session.value(), std::int64_t(reference.sessions.size()));
    EXPECT_EQ(session->running.previousClose, reference.close);
    EXPECT_EQ(session->running.deals, std::int64_t(deals.size()));

    const auto told = reader.sessions(id);
    std::size_t bar = 0;
    for (const Reference::Session &each : reference.sessions) {
        if (each.deals.empty())
            continue;
        ASSERT_LT(bar, told->bars.size());
        const Bar &found = told->bars[bar++];
        std::int64_t high = 0;
        std::int64_t low = kPriceBound;
        std::int64_t volume = 0;
        std::int64_t amount = 0;
        for (const Deal &deal : each.deals) {
            high = std::max(high, deal.price.value());
            low = std::min(low, deal.price.value());
            volume += deal.quantity.value();
            amount += deal.price.value() * deal.quantity.value();
        }
        EXPECT_EQ(found.day, each.day);
        EXPECT_EQ(found.open, each.deals.front().price);
        EXPECT_EQ(found.close, each.deals.back().price);
        EXPECT_EQ(found.high.value(), high);
        EXPECT_EQ(found.low.value(), low);
        EXPECT_EQ(found.volume.value(), volume);
        EXPECT_EQ(found.amount.value(), amount);
    }
    EXPECT_EQ(bar, told->bars.size());

    for (const std::int64_t size : {1, 3, 7, 50}) {
        const auto count = static_cast<std::int64_t>(deals.size());
        for (std::int64_t page = 1; (page - 2) * size <= count; ++page) {
            const auto found = reader.deals(id, page, size);
            const std::int64_t end = std::max<std::int64_t>(count - (page - 1) * size, 0);
            const std::int64_t first = std::max<std::int64_t>(end - size, 0);
            ASSERT_EQ(std::int64_t(found->size()), end - first);
            for (std::int64_t n = first; n < end; ++n)
                ASSERT_EQ((*found)[static_cast<std::size_t>(n - first)].deal.sequence,
                          deals[static_cast<std::size_t>(n)].sequence);
        }
    }
}

TEST(ChartTables, EqualASlowReferenceAfterRandomTrading)
{
    for (const std::uint32_t seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        const TempFolder folder;
        SqliteStore store(folder / "m.market");
        MarketReader reader(folder / "m.market");
        Scribe scribe(store, Market());
        scribe.remember = true;
        RandomTrading trading(seed, test::smallMarket());
        std::mt19937 random(seed);
        scribe.carryOut(test::listing(test::smallMarket()));
        scribe.carryOut(trading.opening());
        std::int64_t day = 20'200'101;
        std::size_t compared = 0;
        for (int i = 0; i < 500; ++i) {
            std::vector<Command> batch;
            for (auto left = random() % 8; left > 0; --left) {
                batch.push_back(trading.next());
                // Some sessions end with their day, most do not.
                if (auto *settle = std::get_if<SettleDay>(&batch.back()))
                    settle->nextDay = TradingDay(day += random() % 3 == 0 ? 1 : 0);
            }
            // The clock goes on by seconds, stands still, jumps, and is set back.
            const int step = static_cast<int>(random() % 100);
            const std::int64_t by = step < 3 ? -200'000 : step < 5 ? 3'600'000 : step * 400;
            scribe.now = TimeMs(scribe.now.value() + by);
            scribe.carryOut(batch);
            if (i % 100 != 99)
                continue;
            for (const CatalogueCollection &entry : test::smallMarket().collections) {
                expectEqual(reader, Reference(scribe.happened, entry.id), entry.id);
                if (testing::Test::HasFatalFailure())
                    return;
                ++compared;
            }
        }
        EXPECT_EQ(compared, 40u);
        EXPECT_GT(scribe.market().session(), Sequence(2));
        EXPECT_GT(scribe.market().lastDeal(), Sequence(200));

        const std::string grown = store.describeTables();
        rebuildTables(store);
        EXPECT_EQ(store.describeTables(), grown) << "tables made anew equal those that grew";
        for (const CatalogueCollection &entry : test::smallMarket().collections)
            expectEqual(reader, Reference(scribe.happened, entry.id), entry.id);
    }
}

TEST(ChartTables, GoOnAfterTheMarketIsOpenedAgain)
{
    const TempFolder folder;
    std::vector<Event> happened;
    RandomTrading trading(9, test::smallMarket());
    for (int life = 0; life < 6; ++life) {
        SqliteStore store(folder / "m.market");
        Scribe scribe(store, recoverMarket(store).market);
        scribe.remember = true;
        if (life == 0) {
            scribe.carryOut(test::listing(test::smallMarket()));
            scribe.carryOut(trading.opening());
        }
        for (int i = 0; i < 150; ++i)
            scribe.carryOut({trading.next()}, i == 70);
        happened.insert(happened.end(), scribe.happened.begin(), scribe.happened.end());
        MarketReader reader(folder / "m.market");
        for (const CatalogueCollection &entry : test::smallMarket().collections)
            expectEqual(reader, Reference(happened, entry.id), entry.id);
        if (testing::Test::HasFatalFailure())
            return;
    }
}

TEST(ChartTables, SumsOfAMinuteStopAtTheirBound)
{
    const TempFolder folder;
    SqliteStore store(folder / "m.market");
    for (int i = 0; i < 2; ++i) {
        Batch batch;
        MinuteRow row;
        row.collection = CollectionId(1);
        row.last = Fen(5 + i);
        row.volume = Quantity(kAmountBound - 1);
        row.amount = Fen(3);
        batch.tables.minutes.push_back(row);
        store.commit(batch);
    }
    EXPECT_EQ(store.describeTables(),
              "minutes collection=1 session=0 time=0 last=6 volume=" + std::to_string(kAmountBound)
                  + " amount=6\n");
}

/// A writer at work, and readers that look at one collection all the while: whatever they read
/// belongs to one commit.
TEST(ChartTables, AReadIsOfOneCommit)
{
    const TempFolder folder;
    ExchangeOptions options;
    options.folder = folder / "state";
    options.firstCatalogue = test::readFile(test::dataFile("small-catalogue.json"));
    options.clock = std::make_shared<ManualClock>(kMorning);
    Exchange exchange(options);
    MarketServer &market = *exchange.market("/ch/youbi/");
    const CollectionId id(1100);
    std::atomic<bool> enough{false};
    std::atomic<std::int64_t> reads{0};
    std::vector<std::thread> watchers;
    for (int i = 0; i < 2; ++i)
        watchers.emplace_back([&] {
            while (!enough) {
                market.readers().read([&](MarketReader &reader) {
                    const auto session = reader.minutes(id, TimeMs(0), 100'000);
                    std::int64_t volume = 0;
                    std::int64_t amount = 0;
                    for (const MinuteRow &row : session->minutes) {
                        volume += row.volume.value();
                        amount += row.amount.value();
                    }
                    EXPECT_EQ(volume, session->running.volume.value());
                    EXPECT_EQ(amount, session->running.amount.value());
                    ++reads;
                    return 0;
                });
            }
        });
    auto &clock = static_cast<ManualClock &>(*options.clock);
    std::vector<Command> furnish;
    for (const std::int64_t account : {1, 2}) {
        furnish.push_back(OpenAccount{AccountId(account), kDefaultFee, {}});
        furnish.push_back(Deposit{AccountId(account), Fen(1'000'000'000), {}});
        furnish.push_back(GrantHolding{AccountId(account), id, Quantity(5'000), Fen(1'000), {}});
    }
    market.writer().execute(furnish);
    for (int i = 0; i < 200; ++i) {
        market.writer().execute({order(1, Side::Sell, 1'000, 2), order(2, Side::Buy, 1'000, 2)});
        clock.advance(7'000);
        if (i % 50 == 49)
            exchange.settle();
    }
    while (reads < 100)
        std::this_thread::yield();
    enough = true;
    for (std::thread &watcher : watchers)
        watcher.join();
    EXPECT_EQ(market.readers().read([&](MarketReader &reader) {
        return folded(reader.sessions(id)->bars, BarSpan::Day).size();
    }),
              1u)
        << "sessions of one day join";
}

} // namespace
} // namespace zvx
