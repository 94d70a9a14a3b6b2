#include "exchange/core/market.h"
#include "exchange/store/compositeindex.h"
#include "exchange/store/publisher.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zvx {
namespace {

using test::RandomTrading;

/// A market with its publisher.
class Stage
{
public:
    explicit Stage(const Cadence &cadence = {})
        : m_catalogue(test::smallMarket()), m_composite(m_market, std::nullopt)
    {
        std::vector<CollectionInfo> infos;
        for (const CatalogueCollection &entry : m_catalogue.collections) {
            ListCollection list;
            list.collection = entry.id;
            list.previousClose = entry.previousClose;
            list.issued = entry.listed;
            carryOut(list);
            CollectionInfo info;
            info.id = entry.id;
            info.name = entry.name;
            info.listed = entry.listed;
            infos.push_back(info);
        }
        carryOut(SetPhase{true});
        RandomTrading opening(1, m_catalogue);
        for (const Command &command : opening.opening())
            carryOut(command);
        std::vector<CollectionId> ignored;
        m_market.takeDirty(ignored);
        m_publisher = std::make_unique<Publisher>(
            m_catalogue.types, infos, m_market, m_composite.row(),
            [](CollectionId, std::size_t) { return std::vector<DealRow>(); }, cadence);
    }

    Result carryOut(const Command &command)
    {
        std::vector<Event> events;
        const Result result = m_market.apply(command, test::kMorning, events);
        for (const Event &event : events) {
            m_composite.take(event);
            if (m_publisher)
                m_publisher->take(event);
        }
        if (m_publisher) {
            std::vector<CollectionId> dirty;
            m_market.takeDirty(dirty);
            m_publisher->touch(dirty);
        }
        return result;
    }

    Result order(std::int64_t account, std::int64_t collection, Side side, std::int64_t price,
                 std::int64_t quantity)
    {
        PlaceOrder place;
        place.account = AccountId(account);
        place.collection = CollectionId(collection);
        place.side = side;
        place.price = Fen(price);
        place.quantity = Quantity(quantity);
        return carryOut(place);
    }

    /// The seller rests, the buyer comes second. The accounts take turns, so that none runs dry.
    void deal(std::int64_t collection, std::int64_t price, std::int64_t quantity = 1)
    {
        const std::int64_t seller = 1 + m_turn % RandomTrading::kAccounts;
        const std::int64_t buyer = 1 + ++m_turn % RandomTrading::kAccounts;
        ASSERT_EQ(order(seller, collection, Side::Sell, price, quantity).status, Status::Accepted);
        ASSERT_EQ(order(buyer, collection, Side::Buy, price, quantity).status, Status::Accepted);
    }

    TopicSet publish(SteadyMs now)
    {
        return m_publisher->publish(m_market, m_composite.row(), now);
    }
    std::optional<SteadyMs> due() const { return m_publisher->due(); }
    std::shared_ptr<const MarketSnapshot> snapshot() const { return m_publisher->snapshot(); }
    const CatalogueMarket &catalogue() const { return m_catalogue; }
    Market &market() { return m_market; }
    const CompositeRow &composite() const { return m_composite.row(); }

private:
    std::int64_t m_turn = 0;
    CatalogueMarket m_catalogue;
    Market m_market;
    CompositeIndex m_composite;
    std::unique_ptr<Publisher> m_publisher;
};

constexpr Row kRow = 0;
constexpr std::int64_t kId = 1100; // previous close 1000

TEST(Publisher, TheFirstSnapshotIsWholeAndAllVersionsAreOne)
{
    Stage stage;
    const auto snapshot = stage.snapshot();
    EXPECT_EQ(snapshot->types.version, 1u);
    EXPECT_EQ(snapshot->types.data->size(), 2u);
    EXPECT_EQ(snapshot->infos.version, 1u);
    EXPECT_EQ(snapshot->check.version, 1u);
    EXPECT_TRUE(snapshot->check.data->open);
    EXPECT_EQ(dayText(snapshot->check.data->day), "2020-01-01");
    EXPECT_EQ(snapshot->check.data->session, Sequence(1));
    EXPECT_EQ(snapshot->composite.version, 1u);
    EXPECT_EQ(snapshot->composite.data->quote.previousClose, Fen(100'000));
    EXPECT_FALSE(snapshot->composite.data->quote.latest);
    EXPECT_EQ(snapshot->list->version, 1u);
    EXPECT_TRUE(snapshot->list->history.empty());
    ASSERT_EQ(snapshot->collections.size(), 8u);
    for (const auto &collection : snapshot->collections) {
        EXPECT_EQ(collection->item.version, 1u);
        EXPECT_EQ(collection->trade.version, 1u);
        EXPECT_EQ(collection->latest.version, 1u);
    }
    const Quote &quote = *snapshot->list->rows[kRow];
    EXPECT_EQ(quote.previousClose, Fen(1'000));
    EXPECT_FALSE(quote.latest || quote.open || quote.bid || quote.ask);
    EXPECT_EQ(snapshot->collections[kRow]->trade.data->lowerLimit, Fen(900));
    EXPECT_EQ(snapshot->collections[kRow]->trade.data->upperLimit, Fen(1'100));
    EXPECT_EQ(snapshot->rowOf(CollectionId(1103)), std::optional<Row>(3));
    EXPECT_FALSE(snapshot->rowOf(CollectionId(1108)));
    EXPECT_FALSE(stage.due());
    EXPECT_TRUE(stage.publish(1'000'000).empty());
    EXPECT_EQ(stage.snapshot(), snapshot);
}

TEST(Publisher, ADealShowsInEveryFigure)
{
    Stage stage;
    stage.order(3, kId, Side::Buy, 950, 4);
    stage.order(4, kId, Side::Buy, 950, 6);
    stage.order(5, kId, Side::Buy, 940, 1);
    stage.deal(kId, 1'010, 5);
    stage.order(6, kId, Side::Sell, 950, 3); // takes from the resting buys
    stage.order(7, kId, Side::Sell, 1'020, 9);
    const TopicSet topics = stage.publish(0);
    EXPECT_TRUE(topics.list);
    EXPECT_TRUE(topics.composite);
    EXPECT_FALSE(topics.check);
    ASSERT_EQ(topics.collections.size(), 1u);
    EXPECT_TRUE(topics.collections[0].item && topics.collections[0].trade
                && topics.collections[0].latest);

    const auto snapshot = stage.snapshot();
    const Quote &quote = *snapshot->list->rows[kRow];
    EXPECT_EQ(quote.latest, Fen(950));
    EXPECT_EQ(quote.open, Fen(1'010));
    EXPECT_EQ(quote.high, Fen(1'010));
    EXPECT_EQ(quote.low, Fen(950));
    EXPECT_EQ(quote.bid, Fen(950));
    EXPECT_EQ(quote.bidQuantity, Quantity(7));
    EXPECT_EQ(quote.ask, Fen(1'020));
    EXPECT_EQ(quote.askQuantity, Quantity(9));
    EXPECT_EQ(quote.volume, Quantity(8));
    EXPECT_EQ(quote.amount, Fen(5 * 1'010 + 3 * 950));
    const CollectionSnapshot &collection = *snapshot->collections[kRow];
    EXPECT_EQ(collection.item.data->quote, quote);
    EXPECT_EQ(collection.item.data->outer, Quantity(5));
    EXPECT_EQ(collection.item.data->inner, Quantity(3));
    EXPECT_EQ(collection.item.data->buyQuantity, Quantity(8));
    EXPECT_EQ(collection.item.data->sellQuantity, Quantity(9));
    EXPECT_EQ(collection.trade.data->latest, Fen(950));
    ASSERT_EQ(collection.trade.data->buys.size(), 2u);
    EXPECT_EQ(collection.trade.data->buys[0], (PriceLevel{Fen(950), Quantity(7)}));
    EXPECT_EQ(collection.trade.data->buys[1], (PriceLevel{Fen(940), Quantity(1)}));
    const LatestDeals &deals = *collection.latest.data;
    ASSERT_EQ(deals.size(), 2u);
    EXPECT_EQ(deals[0].sequence, Sequence(1));
    EXPECT_EQ(deals[0].taker, Side::Buy);
    EXPECT_EQ(deals[1].price, Fen(950));
    EXPECT_EQ(deals[1].taker, Side::Sell);
    EXPECT_EQ(snapshot->composite.data->quote.volume, Quantity(8));
    EXPECT_EQ(snapshot->composite.data->quote.amount, quote.amount);
}

TEST(Publisher, TheCompositeWeighsByValue)
{
    Stage stage;
    std::int64_t base = 0;
    for (const CatalogueCollection &entry : stage.catalogue().collections)
        base += entry.previousClose.value() * entry.listed.value();
    stage.deal(1105, 13'050'000); // 60,000 pieces, previous close 13,000,000
    const std::int64_t high
        = static_cast<std::int64_t>(Wide(100'000) * (base + 50'000 * std::int64_t(60'000)) / base);
    stage.deal(1105, 12'900'000);
    const std::int64_t low
        = static_cast<std::int64_t>(Wide(100'000) * (base - 100'000 * std::int64_t(60'000)) / base);
    stage.publish(0);
    const Quote quote = stage.snapshot()->composite.data->quote;
    EXPECT_EQ(quote.open, Fen(high));
    EXPECT_EQ(quote.high, Fen(high));
    EXPECT_EQ(quote.low, Fen(low));
    EXPECT_EQ(quote.latest, Fen(low));
    ASSERT_LT(low, 100'000);
    ASSERT_GT(high, 100'000);

    stage.carryOut(SettleDay{TradingDay(20'200'101)});
    stage.publish(10'000);
    const Quote next = stage.snapshot()->composite.data->quote;
    EXPECT_EQ(next.previousClose, Fen(low));
    EXPECT_FALSE(next.latest || next.open || next.high || next.low);
    // A market that starts in the middle goes on from the same figures.
    stage.deal(1105, 12'950'000);
    const CompositeIndex again(stage.market(), stage.composite());
    EXPECT_EQ(again.row().last, stage.composite().last);
}

TEST(Publisher, WhatDidNotChangeIsShared)
{
    Stage stage;
    const auto before = stage.snapshot();
    stage.deal(kId, 1'000);
    stage.publish(0);
    const auto after = stage.snapshot();
    EXPECT_EQ(after->types.data, before->types.data);
    EXPECT_EQ(after->infos.data, before->infos.data);
    EXPECT_EQ(after->check.data, before->check.data);
    EXPECT_EQ(after->index, before->index);
    EXPECT_NE(after->collections[kRow], before->collections[kRow]);
    EXPECT_NE(after->list->rows[kRow], before->list->rows[kRow]);
    for (Row row = 1; row < 8; ++row) {
        EXPECT_EQ(after->collections[row], before->collections[row]);
        EXPECT_EQ(after->list->rows[row], before->list->rows[row]);
    }
    // What readers hold stays as it was.
    EXPECT_FALSE(before->list->rows[kRow]->latest);
    EXPECT_TRUE(before->collections[kRow]->latest.data->empty());
    // Details alone leave the list object untouched.
    stage.order(3, kId, Side::Buy, 950, 1);
    stage.publish(200);
    EXPECT_EQ(stage.snapshot()->list, after->list);
    EXPECT_NE(stage.snapshot()->collections[kRow]->trade.data,
              after->collections[kRow]->trade.data);
    EXPECT_EQ(stage.snapshot()->collections[kRow]->latest.data,
              after->collections[kRow]->latest.data);
}

TEST(Publisher, KeepsItsCadence)
{
    Stage stage;
    const auto versions = [&] {
        const auto snapshot = stage.snapshot();
        return std::make_pair(snapshot->list->version, snapshot->collections[kRow]->trade.version);
    };
    using Pair = std::pair<std::uint64_t, std::uint64_t>;
    stage.order(3, kId, Side::Buy, 950, 1);
    ASSERT_TRUE(stage.due());
    EXPECT_LT(*stage.due(), 0); // after a quiet while at once
    stage.publish(10'000);
    EXPECT_EQ(versions(), Pair(2, 2));
    EXPECT_FALSE(stage.due());

    stage.order(3, kId, Side::Buy, 951, 1);
    EXPECT_EQ(stage.due(), std::optional<SteadyMs>(10'200));
    EXPECT_TRUE(stage.publish(10'199).empty());
    EXPECT_EQ(versions(), Pair(2, 2));
    EXPECT_FALSE(stage.publish(10'200).list);
    EXPECT_EQ(versions(), Pair(2, 3));
    EXPECT_EQ(stage.due(), std::optional<SteadyMs>(11'200));

    stage.order(3, kId, Side::Buy, 952, 1);
    EXPECT_EQ(stage.due(), std::optional<SteadyMs>(10'400));
    stage.publish(10'400);
    EXPECT_EQ(versions(), Pair(2, 4));
    EXPECT_TRUE(stage.publish(11'199).empty());
    const TopicSet topics = stage.publish(11'200);
    EXPECT_TRUE(topics.list);
    EXPECT_TRUE(topics.collections.empty());
    EXPECT_EQ(versions(), Pair(3, 4));
    EXPECT_FALSE(stage.due());
}

TEST(Publisher, WhatTurnsOutEqualIsNotPublished)
{
    Stage stage;
    const auto before = stage.snapshot();
    const Result placed = stage.order(3, kId, Side::Buy, 950, 1);
    RevokeOrders revoke;
    revoke.account = AccountId(3);
    revoke.orders = {placed.order};
    stage.carryOut(revoke);
    EXPECT_TRUE(stage.publish(0).empty());
    EXPECT_EQ(stage.snapshot(), before);
}

TEST(Publisher, KeepsTheLastTwoHundredDeals)
{
    Stage stage;
    SteadyMs now = 0;
    std::int64_t deals = 0;
    for (const int count : {1, 150, 60, 199, 200, 201, 700, 1}) {
        for (int i = 0; i < count; ++i)
            stage.deal(kId, 1'000 + ++deals % 50);
        stage.publish(now += 200);
        const LatestDeals &latest = *stage.snapshot()->collections[kRow]->latest.data;
        ASSERT_EQ(latest.size(), static_cast<std::size_t>(std::min<std::int64_t>(deals, 200)));
        for (std::size_t i = 0; i < latest.size(); ++i)
            ASSERT_EQ(latest[latest.size() - 1 - i].sequence.value(),
                      deals - static_cast<std::int64_t>(i));
    }
    stage.carryOut(SettleDay{TradingDay(20'200'101)});
    stage.deal(kId, 1'001);
    const TopicSet topics = stage.publish(now += 2'000);
    EXPECT_TRUE(topics.check);
    EXPECT_TRUE(topics.list);
    const auto snapshot = stage.snapshot();
    EXPECT_EQ(snapshot->check.data->session, Sequence(2));
    EXPECT_EQ(snapshot->collections[kRow]->latest.data->size(), 1u);
    EXPECT_EQ(snapshot->list->rows[kRow]->volume, Quantity(1));
}

TEST(Publisher, ASuspensionIsToldAsABriefChange)
{
    Stage stage;
    stage.carryOut(SuspendCollection{CollectionId(1102), true});
    const TopicSet topics = stage.publish(0);
    EXPECT_TRUE(topics.brief);
    const auto snapshot = stage.snapshot();
    EXPECT_EQ(snapshot->infos.version, 2u);
    EXPECT_TRUE((*snapshot->infos.data)[2]->suspended);
    EXPECT_EQ(snapshot->collections[2]->info, (*snapshot->infos.data)[2]);
    EXPECT_FALSE((*snapshot->infos.data)[1]->suspended);
}

TEST(Publisher, AClosedMarketIsToldAtOnce)
{
    Stage stage;
    stage.carryOut(SetPhase{false});
    EXPECT_TRUE(stage.publish(0).check);
    stage.carryOut(SetPhase{true});
    EXPECT_TRUE(stage.publish(0).check);
    EXPECT_EQ(stage.snapshot()->check.version, 3u);
}

/// What a client does with changes: it writes the named fields over its own rows.
void apply(std::vector<Quote> &rows, const ListSnapshot &list,
           const std::vector<ListDelta::Change> &changes)
{
    for (const ListDelta::Change &change : changes) {
        Quote &mine = rows[change.row];
        const Quote &theirs = *list.rows[change.row];
        const auto copy = [&](auto Quote::*member, QuoteField field) {
            if (change.fields.has(field))
                mine.*member = theirs.*member;
        };
        copy(&Quote::latest, QuoteField::Latest);
        copy(&Quote::previousClose, QuoteField::PreviousClose);
        copy(&Quote::open, QuoteField::Open);
        copy(&Quote::high, QuoteField::High);
        copy(&Quote::low, QuoteField::Low);
        copy(&Quote::bid, QuoteField::Bid);
        copy(&Quote::ask, QuoteField::Ask);
        copy(&Quote::bidQuantity, QuoteField::BidQuantity);
        copy(&Quote::askQuantity, QuoteField::AskQuantity);
        copy(&Quote::volume, QuoteField::Volume);
        copy(&Quote::amount, QuoteField::Amount);
    }
}

std::vector<Quote> copyRows(const ListSnapshot &list)
{
    std::vector<Quote> rows;
    for (const auto &row : list.rows)
        rows.push_back(*row);
    return rows;
}

TEST(ListDeltas, OverAnyBaseGiveTheWholeListForThousandsOfSteps)
{
    Cadence cadence;
    cadence.history = 10;
    Stage stage(cadence);
    RandomTrading trading(11, stage.catalogue());
    std::mt19937 random(12);
    // Clients that poll at their own pace, so that bases of all ages occur.
    struct Client {
        std::uint64_t version = 0;
        std::vector<Quote> rows;
    };
    std::vector<Client> clients(5);
    int merged = 0;
    int gaps = 0;
    SteadyMs now = 0;
    for (int step = 0; step < 5'000; ++step) {
        for (unsigned i = random() % 4; i > 0; --i)
            stage.carryOut(trading.next());
        now += static_cast<SteadyMs>(random() % 1'500);
        stage.publish(now);
        const ListSnapshot &list = *stage.snapshot()->list;
        for (std::size_t i = 0; i < clients.size(); ++i) {
            Client &client = clients[i];
            if (random() % (1u + 4u * static_cast<unsigned>(i)) != 0
                || client.version == list.version)
                continue;
            const auto changes = list.changesSince(client.version);
            if (changes) {
                apply(client.rows, list, *changes);
                ++merged;
            } else {
                client.rows = copyRows(list);
                ++gaps;
            }
            client.version = list.version;
            ASSERT_EQ(client.rows, copyRows(list)) << "step " << step;
        }
    }
    EXPECT_GT(merged, 1'000);
    EXPECT_GT(gaps, 20);
}

TEST(ListDeltas, AnUnknownBaseIsAGap)
{
    Stage stage;
    for (int i = 0; i < 3; ++i) {
        stage.deal(kId, 1'000 + i);
        stage.publish(i * 2'000);
    }
    const ListSnapshot &list = *stage.snapshot()->list;
    ASSERT_EQ(list.version, 4u);
    EXPECT_FALSE(list.changesSince(0));
    EXPECT_TRUE(list.changesSince(1));
    EXPECT_TRUE(list.changesSince(3));
    EXPECT_FALSE(list.changesSince(4)); // nothing to say
    EXPECT_FALSE(list.changesSince(5)); // a version that was never published
    EXPECT_FALSE(list.changesSince(~std::uint64_t(0)));
}

} // namespace
} // namespace zvx
