#include "exchange/store/marketreader.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace zvx {
namespace {

using test::RandomTrading;
using test::Scribe;
using test::TempFolder;

class DeliveryRows : public testing::Test
{
protected:
    void SetUp() override
    {
        store = std::make_unique<SqliteStore>(folder / "m.market");
        scribe = std::make_unique<Scribe>(*store, Market());
        ListCollection listing;
        listing.collection = CollectionId(7);
        listing.previousClose = Fen(1'000);
        listing.issued = Quantity(1'000);
        scribe->carryOut({listing});
        for (int id = 1; id <= 2; ++id)
            scribe->carryOut(
                {OpenAccount{AccountId(id), kDefaultFee, {}},
                 GrantHolding{AccountId(id), CollectionId(7), Quantity(300), Fen(100), {}}});
        reader = std::make_unique<MarketReader>(folder / "m.market");
    }

    void ask(int account, int quantity, std::uint64_t name)
    {
        scribe->carryOut({RequestDelivery{AccountId(account), CollectionId(7), Quantity(quantity),
                                          ParcelId{5, name}, ActionKey{6, name}}});
    }
    void advance(int delivery, DeliveryStage stage)
    {
        scribe->carryOut({AdvanceDelivery{DeliveryNumber(delivery), stage}});
    }
    /// Numbers and stages.
    static std::string described(const std::vector<DeliveryRow> &rows)
    {
        std::string text;
        for (const DeliveryRow &row : rows)
            text += std::to_string(row.number.value()) + ':'
                + std::to_string(static_cast<int>(row.stage)) + ' ';
        return text;
    }
    std::string page(int account, std::int64_t number, std::int64_t size,
                     TradingDay first = TradingDay(TradingDay::least),
                     TradingDay last = TradingDay(TradingDay::most))
    {
        RecordPage page;
        page.page = number;
        page.size = size;
        page.first = first;
        page.last = last;
        return described(reader->deliveries(AccountId(account), page));
    }

    TempFolder folder;
    std::unique_ptr<SqliteStore> store;
    std::unique_ptr<Scribe> scribe;
    std::unique_ptr<MarketReader> reader;
};

TEST_F(DeliveryRows, TellWhatWasAskedForAndHowFarItIs)
{
    scribe->now = TimeMs(1'000);
    ask(1, 3, 1);
    scribe->now = TimeMs(2'000);
    advance(1, DeliveryStage::Preparing);
    const auto row = reader->deliveryOf(ParcelId{5, 1});
    ASSERT_TRUE(row);
    EXPECT_EQ(row->number, DeliveryNumber(1));
    EXPECT_EQ(row->account, AccountId(1));
    EXPECT_EQ(row->collection, CollectionId(7));
    EXPECT_EQ(row->quantity, Quantity(3));
    EXPECT_EQ(row->stage, DeliveryStage::Preparing);
    EXPECT_EQ(row->place, 1);
    EXPECT_EQ(row->day, scribe->market().day());
    EXPECT_EQ(row->askedAt, TimeMs(1'000));
    EXPECT_EQ(row->movedAt, TimeMs(2'000));
    EXPECT_EQ(row->key, (ActionKey{6, 1}));
    EXPECT_EQ(described({*reader->deliveryOf(AccountId(1), ActionKey{6, 1})}), "1:1 ");
    EXPECT_FALSE(reader->deliveryOf(AccountId(2), ActionKey{6, 1})) << "keys are an account's own";
    EXPECT_FALSE(reader->deliveryOf(AccountId(1), ActionKey{}));
    EXPECT_FALSE(reader->deliveryOf(ParcelId{5, 2}));
    EXPECT_EQ(reader->account(AccountId(1)).holdings[0].frozen, Quantity(3));
    advance(1, DeliveryStage::Sent);
    EXPECT_EQ(reader->account(AccountId(1)).holdings[0].quantity, Quantity(297));
    EXPECT_EQ(reader->account(AccountId(1)).holdings[0].frozen, Quantity(0));
    EXPECT_EQ(reader->account(AccountId(1)).holdings[0].cost, Fen(29'700));
}

TEST_F(DeliveryRows, ComeByThePageTheNewestFirst)
{
    for (int i = 1; i <= 25; ++i)
        ask(i % 5 == 0 ? 2 : 1, 1, static_cast<std::uint64_t>(i));
    EXPECT_EQ(page(2, 1, 2), "25:0 20:0 ");
    EXPECT_EQ(page(2, 2, 2), "15:0 10:0 ");
    EXPECT_EQ(page(2, 3, 2), "5:0 ");
    EXPECT_EQ(page(2, 4, 2), "");
    EXPECT_EQ(page(2, INT32_MAX, 200), "");
    EXPECT_EQ(page(1, 2, 15), "6:0 4:0 3:0 2:0 1:0 ");
    EXPECT_EQ(page(3, 1, 10), "");
}

TEST_F(DeliveryRows, AreFoundBetweenTwoDays)
{
    const TradingDay first = scribe->market().day();
    const TradingDay second(first.value() + 1);
    const TradingDay third(first.value() + 2);
    ask(1, 1, 1);
    ask(1, 1, 2);
    scribe->carryOut({SettleDay{first}});
    ask(1, 1, 3);
    scribe->carryOut({SettleDay{third}});
    ask(1, 1, 4);
    EXPECT_EQ(page(1, 1, 10, first, first), "3:0 2:0 1:0 ");
    EXPECT_EQ(page(1, 2, 2, first, second), "1:0 ");
    EXPECT_EQ(page(1, 1, 10, second, second), "");
    EXPECT_EQ(page(1, 1, 10, second, third), "4:0 ");
    EXPECT_EQ(page(1, 1, 10, third, first), "");
    EXPECT_EQ(page(1, 1, 10), "4:0 3:0 2:0 1:0 ");
}

TEST_F(DeliveryRows, OfThoseUnderWayTheOldestComesFirst)
{
    for (int i = 1; i <= 6; ++i)
        ask(1 + i % 2, 1, static_cast<std::uint64_t>(i));
    advance(2, DeliveryStage::Preparing);
    advance(3, DeliveryStage::Sent);
    advance(4, DeliveryStage::Refused);
    scribe->carryOut({CancelDelivery{AccountId(2), DeliveryNumber(5), {}}});
    EXPECT_EQ(described(reader->deliveriesUnderWay()), "1:0 2:1 6:0 ");
}

TEST_F(DeliveryRows, AreTheSameMadeAnewFromTheEvents)
{
    RandomTrading trading(3, test::smallMarket());
    for (const CatalogueCollection &collection : test::smallMarket().collections) {
        ListCollection listing;
        listing.collection = collection.id;
        listing.previousClose = collection.previousClose;
        listing.issued = collection.listed;
        scribe->carryOut({listing});
    }
    scribe->carryOut({SetPhase{true}});
    scribe->carryOut(trading.opening());
    for (int i = 0; i < 1'500; ++i)
        scribe->carryOut({trading.next()});
    const std::string tables = store->describeTables();
    EXPECT_NE(tables.find("\ndeliveries "), std::string::npos);
    EXPECT_FALSE(reader->deliveriesUnderWay().empty());
    rebuildTables(*store);
    EXPECT_EQ(store->describeTables(), tables);
    std::vector<DeliveryView> live;
    scribe->market().deliveries(live);
    const auto stored = reader->deliveriesUnderWay();
    ASSERT_EQ(stored.size(), live.size());
    for (std::size_t i = 0; i < live.size(); ++i) {
        EXPECT_EQ(stored[i].number, live[i].delivery);
        EXPECT_EQ(stored[i].stage, live[i].stage);
        EXPECT_EQ(stored[i].parcel, live[i].parcel);
    }
}

} // namespace
} // namespace zvx
