#include "exchange/service/robot_crowd.h"

#include "exchange/core/market.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace zvx;

constexpr int collections = 40;
constexpr std::int64_t step = 400;

/// A market and its robots in a time of their own.
class VirtualMarket
{
public:
    VirtualMarket(std::uint64_t seed, const RobotOptions &options)
        : m_listings(list(m_market)), m_crowd(seed, m_listings, options), m_books(collections)
    {
    }

    /// Lets `ms` pass; every `lossy`-th command finds the queue full.
    void run(std::int64_t ms, int lossy = 0)
    {
        for (const std::int64_t end = m_now + ms; m_now < end; m_now += step) {
            for (int i = 0; i < collections; ++i)
                look(i);
            std::vector<RobotCrowd::Wish> wishes;
            m_crowd.step(
                m_now, [&](std::size_t i) { return &m_books[i]; }, 256, wishes);
            EXPECT_LE(wishes.size(), 256u);
            for (RobotCrowd::Wish &wish : wishes) {
                if (lossy > 0 && ++m_commands % lossy == 0)
                    m_crowd.dropped(wish.token);
                else
                    m_crowd.answered(wish.token,
                                     m_market.apply(wish.command, TimeMs(m_now), m_events));
            }
        }
    }

    void settle()
    {
        m_market.apply(SettleDay{TradingDay(20200101)}, TimeMs(m_now), m_events);
        m_crowd.sessionEnded();
    }

    /// New robots, which know nothing of what the old ones did.
    void restart(std::uint64_t seed, const RobotOptions &options)
    {
        m_crowd = RobotCrowd(seed, m_listings, options);
    }

    const Market &market() const { return m_market; }
    const TradeLevels &book(int i) const { return m_books[static_cast<std::size_t>(i)]; }

private:
    static std::vector<RobotCrowd::Listing> list(Market &market)
    {
        std::vector<Event> events;
        std::vector<RobotCrowd::Listing> listings;
        market.apply(SetPhase{true}, TimeMs(0), events);
        for (int i = 0; i < collections; ++i) {
            ListCollection listing;
            listing.collection = CollectionId(100 + i);
            listing.previousClose = Fen(i == 0 ? 1 : 200 * i * i);
            listing.issued = Quantity(50'000);
            market.apply(listing, TimeMs(0), events);
            listings.push_back({listing.collection, listing.issued, false});
        }
        return listings;
    }

    void look(int i)
    {
        const CollectionId id(100 + i);
        const auto view = *m_market.collection(id);
        TradeLevels &book = m_books[static_cast<std::size_t>(i)];
        book = TradeLevels();
        if (view.day.last.value() > 0)
            book.latest = view.day.last;
        book.previousClose = view.day.previousClose;
        book.lowerLimit = view.day.lower;
        book.upperLimit = view.day.upper;
        std::vector<Level> levels;
        m_market.levels(id, Side::Buy, 5, levels);
        for (const Level &level : levels)
            book.buys.push_back({level.price, level.quantity});
        m_market.levels(id, Side::Sell, 5, levels);
        for (const Level &level : levels)
            book.sells.push_back({level.price, level.quantity});
    }

    Market m_market;
    std::vector<RobotCrowd::Listing> m_listings;
    RobotCrowd m_crowd;
    std::vector<TradeLevels> m_books;
    std::vector<Event> m_events;
    std::int64_t m_now = 1'000;
    int m_commands = 0;
};

RobotOptions busy()
{
    RobotOptions options;
    options.ordersPerSecond = 20;
    options.restingMs = 60'000;
    return options;
}

std::int64_t dealsOf(const Market &market)
{
    return market.lastDeal().value();
}

TEST(Robots, DoTheSameForTheSameSeed)
{
    VirtualMarket first(7, busy());
    VirtualMarket second(7, busy());
    VirtualMarket other(8, busy());
    for (VirtualMarket *each : {&first, &second, &other})
        each->run(120'000);
    EXPECT_EQ(first.market().stateHash(), second.market().stateHash());
    EXPECT_NE(first.market().stateHash(), other.market().stateHash());
    EXPECT_GT(dealsOf(first.market()), 0);
}

TEST(Robots, LayOutBooksAndTradeInManyCollections)
{
    VirtualMarket world(1, busy());
    world.run(60'000);
    const std::int64_t before = dealsOf(world.market());
    world.run(60'000);
    EXPECT_GT(dealsOf(world.market()) - before, 60 * 20 / 4) << "a quarter of the orders at least";
    int traded = 0;
    int twoSided = 0;
    std::set<std::int64_t> prices;
    for (int i = 0; i < collections; ++i) {
        const TradeLevels &book = world.book(i);
        traded += book.latest ? 1 : 0;
        twoSided += !book.buys.empty() && !book.sells.empty() ? 1 : 0;
        if (book.latest) {
            EXPECT_GE(*book.latest, book.lowerLimit);
            EXPECT_LE(*book.latest, book.upperLimit);
            prices.insert(book.latest->value() * 1000 / book.previousClose.value());
        }
    }
    EXPECT_GT(traded, collections * 3 / 4);
    EXPECT_GT(twoSided, collections * 3 / 4);
    EXPECT_GT(prices.size(), 10u) << "not all prices stay where they began";
    EXPECT_EQ(world.market().audit(), std::nullopt);
}

TEST(Robots, KeepTheBooksBounded)
{
    VirtualMarket world(3, busy());
    std::size_t most = 0;
    for (int minute = 0; minute < 60; ++minute) {
        world.run(60'000);
        most = std::max(most, world.market().openOrders());
    }
    const RobotOptions options = busy();
    EXPECT_LE(most, collections * (options.restingOfCollection + 10));
    EXPECT_EQ(world.market().audit(), std::nullopt);
}

TEST(Robots, GoOnAfterASettlement)
{
    VirtualMarket world(5, busy());
    world.run(60'000);
    world.settle();
    EXPECT_EQ(world.market().openOrders(), 0u);
    const std::int64_t before = dealsOf(world.market());
    world.run(60'000);
    EXPECT_GT(world.market().openOrders(), std::size_t(collections));
    EXPECT_GT(dealsOf(world.market()), before);
}

TEST(Robots, RevokeWhatAnEarlierRunLeft)
{
    VirtualMarket world(6, busy());
    world.run(60'000);
    const OrderNumber last = world.market().lastOrder();
    world.restart(6, busy());
    world.run(60'000);
    EXPECT_GT(world.market().lastOrder(), last);
    for (const AccountId account : world.market().accounts()) {
        std::vector<OrderView> open;
        world.market().ordersOf(account, open);
        EXPECT_FALSE(open.empty());
        for (const OrderView &order : open)
            EXPECT_GT(order.order, last);
    }
    EXPECT_EQ(world.market().audit(), std::nullopt);
}

TEST(Robots, BearAQueueThatIsOftenFull)
{
    VirtualMarket world(9, busy());
    world.run(120'000, 3);
    EXPECT_GT(dealsOf(world.market()), 0);
    EXPECT_EQ(world.market().audit(), std::nullopt);
}

TEST(Robots, SendNoMoreThanTheirRate)
{
    RobotOptions options = busy();
    options.ordersPerSecond = 1;
    options.restingMs = RobotOptions().restingMs;
    VirtualMarket world(2, options);
    world.run(120'000);
    const std::int64_t before = world.market().lastOrder().value();
    world.run(100'000);
    const std::int64_t orders = world.market().lastOrder().value() - before;
    EXPECT_GT(orders, 40);
    EXPECT_LT(orders, 200) << "the rate, and what laying out thin books again takes";
}

TEST(SeededSource, StaysWithinItsBounds)
{
    SeededSource source(1);
    std::set<std::int64_t> seen;
    for (int i = 0; i < 1000; ++i) {
        const std::int64_t value = source.between(-2, 2);
        EXPECT_GE(value, -2);
        EXPECT_LE(value, 2);
        seen.insert(value);
    }
    EXPECT_EQ(seen.size(), 5u);
}

} // namespace
