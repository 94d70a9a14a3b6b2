#include "exchange/core/table.h"

#include <gtest/gtest.h>

using namespace zvx;
using zvxtest::OpenMarket;
using zvxtest::Table;

namespace {

/** Three rich traders, one collection at 10.00 with limits of 9.00 and 11.00. */
class Matching : public testing::Test
{
protected:
    Matching()
    {
        table.play(R"(
            deposit 1 100000.00         = accepted
            deposit 2 100000.00         = accepted
            deposit 3 100000.00         = accepted
            grant 1 7 1000 9.00         = accepted
            grant 2 7 1000 9.00         = accepted
            grant 3 7 1000 9.00         = accepted
        )");
    }

    OpenMarket table{3, 10000};
};

} // namespace

TEST_F(Matching, BetterPricesTradeFirstAtThePriceThatRests)
{
    table.play(R"(
        sell 2 7 10.03 5                = accepted 1
        sell 2 7 10.01 5                = accepted 2
        sell 3 7 10.02 5                = accepted 3
        book 7                          = | 10.01x5 10.02x5 10.03x5
        buy 1 7 10.02 12                = accepted 4
        deals                           = 1<2 10.01x5 1<3 10.02x5
        done                            = 2 filled 3 filled
        book 7                          = 10.02x2 | 10.03x5
        sell 3 7 9.00 3                 = accepted 5
        deals                           = 1<3 10.02x2
        book 7                          = | 9.00x1 10.03x5
        day 7                           = 10.01 10.02 10.01 10.02 12 120.19
    )");
}

TEST_F(Matching, EqualPricesTradeInOrderOfArrival)
{
    table.play(R"(
        sell 2 7 10.00 3                = accepted 1
        sell 3 7 10.00 3                = accepted 2
        sell 2 7 10.00 3                = accepted 3
        buy 1 7 10.00 4                 = accepted 4
        deals                           = 1<2 10.00x3 1<3 10.00x1
        buy 1 7 10.00 4                 = accepted 5
        deals                           = 1<3 10.00x2 1<2 10.00x2
        orders 2                        = 3:1
        orders 3                        =
    )");
}

TEST_F(Matching, APartlyFilledOrderKeepsItsPlace)
{
    table.play(R"(
        buy 2 7 10.00 5                 = accepted 1
        buy 3 7 10.00 5                 = accepted 2
        sell 1 7 10.00 2                = accepted 3
        sell 1 7 10.00 4                = accepted 4
        deals                           = 2<1 10.00x2 2<1 10.00x3 3<1 10.00x1
        orders 3                        = 2:4
    )");
}

TEST_F(Matching, TheNewerOrderOfAnAccountEndsItsOwnOlderOne)
{
    table.play(R"(
        sell 1 7 10.00 5                = accepted 1
        sell 2 7 10.00 5                = accepted 2
        sell 1 7 10.01 5                = accepted 3
        buy 1 7 10.02 8                 = accepted 4
        deals                           = 1<2 10.00x5
        done                            = 1 self-trade 2 filled 3 self-trade
        book 7                          = 10.02x3 |
        holding 1 7                     = 1005 0 9050.15
        orders 1                        = 4:3
    )");
}

TEST_F(Matching, OwnOrdersThatDoNotCrossStay)
{
    table.play(R"(
        sell 1 7 10.05 5                = accepted 1
        buy 1 7 10.04 5                 = accepted 2
        book 7                          = 10.04x5 | 10.05x5
        buy 1 7 10.04 1                 = accepted 3
        done                            =
    )");
}

TEST_F(Matching, ChecksComeInOrderOfPrecedence)
{
    table.play(R"(
        list 8 10.00 100 tick 5 lot 10  = accepted
        buy 9 99 99.00 -1               = account unknown
        freeze 1 on                     = accepted
        phase closed                    = accepted
        buy 1 99 99.00 -1               = account frozen
        freeze 1 off                    = accepted
        buy 1 99 99.00 -1               = market closed
        phase open                      = accepted
        buy 1 99 99.00 -1               = collection unknown
        suspend 8 on                    = accepted
        buy 1 8 99.00 -1                = collection suspended
        suspend 8 off                   = accepted
        buy 1 8 11.01 -1                = price outside limits
        buy 1 8 10.99 -1                = bad tick
        buy 1 8 11.00 -1                = bad quantity
        buy 1 8 11.00 0                 = bad quantity
        buy 1 8 11.00 15                = bad quantity
        buy 1 8 11.00 100000010         = bad quantity
        buy 1 8 11.00 100000000         = not enough money
        sell 1 8 11.00 10               = not enough holdings
        buy 1 8 11.00 10                = accepted 1
    )");
}

TEST_F(Matching, TheLimitPricesTradeAndOneTickBeyondDoesNot)
{
    table.play(R"(
        limits 7                        = 9.00 11.00
        sell 2 7 8.99 1                 = price outside limits
        sell 2 7 11.01 1                = price outside limits
        buy 1 7 8.99 1                  = price outside limits
        buy 1 7 11.01 1                 = price outside limits
        sell 2 7 9.00 1                 = accepted 1
        buy 1 7 11.00 2                 = accepted 2
        deals                           = 1<2 9.00x1
        sell 2 7 11.00 1                = accepted 3
        deals                           = 1<2 11.00x1
    )");
}

TEST_F(Matching, TheLimitsOfAHighPriceStayBelowTheFloatBound)
{
    table.play(R"(
        list 8 131072.00 10             = bad price
        list 8 131071.99 10             = accepted
        limits 8                        = 117964.79 131071.99
        deposit 1 1000000.00            = accepted
        buy 1 8 131072.00 1             = price outside limits
        buy 1 8 131071.99 1             = accepted 1
    )");
}

TEST_F(Matching, RevokingJudgesEachNumberByItself)
{
    table.play(R"(
        buy 1 7 9.50 5                  = accepted 1
        buy 2 7 9.50 5                  = accepted 2
        buy 1 7 9.60 5                  = accepted 3
        revoke 1                        = bad quantity
        revoke 9 1                      = account unknown
        revoke 1 0                      = order unknown
        revoke 1 4                      = order unknown
        revoke 1 2                      = not your order
        revoke 1 2 3 1 4 3              = accepted 2
        done                            = 3 revoked 1 revoked
        revoke 1 3                      = order done
        revoke 2 3                      = order done
        book 7                          = 9.50x5 |
        freeze 2 on                     = accepted
        revoke 2 2                      = account frozen
        freeze 2 off                    = accepted
        phase closed                    = accepted
        revoke 2 2                      = accepted 1
        cash 2                          = 100000.00 0.00
    )");
}

TEST_F(Matching, AKeyStandsForOneAction)
{
    table.play(R"(
        buy 1 7 9.50 5 key 1            = accepted 1
        buy 1 7 9.50 5 key 1            = exists accepted 1
        buy 1 7 9.50 6 key 1            = key differs
        sell 1 7 9.50 5 key 1           = key differs
        revoke 1 1 key 1                = key differs
        buy 2 7 9.50 5 key 1            = accepted 2
        revoke 1 1 key 2                = accepted 1
        revoke 1 1 key 2                = exists accepted 1
        buy 1 7 9.50 5 key 1            = exists accepted 1
        deposit 1 1.00 key 3            = accepted
        deposit 1 1.00 key 3            = exists accepted
        withdraw 1 1.00 key 4           = accepted
        withdraw 1 1.00 key 4           = exists accepted
        cash 1                          = 100000.00 0.00
        buy 1 7 9.50 5                  = accepted 3
        buy 1 7 9.50 5                  = accepted 4
    )");
}

TEST_F(Matching, ARefusalStandsUnderItsKeyUnlessItFreesIt)
{
    table.play(R"(
        phase closed                    = accepted
        buy 1 7 9.50 5 key 1            = market closed
        buy 1 7 9.50 6 key 2 freeing    = market closed
        phase open                      = accepted
        buy 1 7 9.50 5 key 1            = exists market closed
        buy 1 7 9.50 6 key 2 freeing    = accepted 1
        buy 1 7 9.50 6 key 2 freeing    = exists accepted 1
        orders 1                        = 1:6
    )");
    const auto known = table.market().answerOf(AccountId(1), {0, 1});
    ASSERT_TRUE(known);
    EXPECT_EQ(known->first, Status::MarketClosed);
    EXPECT_FALSE(table.market().answerOf(AccountId(1), {0, 9}));
    EXPECT_FALSE(table.market().answerOf(AccountId(9), {0, 1}));
}

TEST_F(Matching, ABurntKeyNeverTakesEffect)
{
    table.play(R"(
        burn 1 key 1                    = key burnt
        burn 1 key 1                    = key burnt
        buy 1 7 9.50 5 key 1            = key burnt
        buy 1 7 9.50 5 key 1 freeing    = key burnt
        sell 2 7 9.50 5 key 1           = accepted 1
        revoke 1 1 key 1                = key burnt
        deposit 1 1.00 key 1            = key burnt
        withdraw 1 1.00 key 1           = key burnt
        grant 1 7 1 9.00 key 1          = key burnt
        cash 1                          = 100000.00 0.00
        orders 1                        =
    )");
    const auto known = table.market().answerOf(AccountId(1), {0, 1});
    ASSERT_TRUE(known);
    EXPECT_EQ(known->meaning(), Status::KeyBurnt);
}

TEST_F(Matching, BurningAUsedKeyTellsItsFirstAnswer)
{
    table.play(R"(
        burn 9 key 1                    = account unknown
        burn 1                          = bad key
        buy 1 7 9.50 5 key 1            = accepted 1
        burn 1 key 1                    = exists accepted 1
        buy 1 7 9.50 5 key 1            = exists accepted 1
        withdraw 1 900000.00 key 2      = not enough money
        burn 1 key 2                    = exists not enough money
        buy 1 7 99.00 5 key 3 freeing   = price outside limits
        burn 1 key 3                    = key burnt
        buy 1 7 9.50 5 key 3 freeing    = key burnt
        orders 1                        = 1:5
    )");
}

TEST_F(Matching, ABurntKeyHoldsThroughFreezeCloseRestartAndOneSettlement)
{
    table.play(R"(
        freeze 1 on                     = accepted
        phase closed                    = accepted
        burn 1 key 1                    = key burnt
        buy 1 7 9.50 5 key 1            = key burnt
        freeze 1 off                    = accepted
        phase open                      = accepted
        settle 20200102                 = accepted
        buy 1 7 9.50 5 key 1            = key burnt
    )");
    Market restored = Market::restore(table.market().checkpoint());
    EXPECT_EQ(restored.stateHash(), table.market().stateHash());
    std::vector<Event> events;
    Deposit late;
    late.account = AccountId(1);
    late.amount = Fen(100);
    late.key = {0, 1};
    EXPECT_EQ(restored.apply(late, TimeMs(0), events).status, Status::KeyBurnt);
    EXPECT_TRUE(events.empty());
}

TEST_F(Matching, ARefusedCommandWithoutAKeyLeavesNoTrace)
{
    const std::uint64_t hash = table.market().stateHash();
    const std::size_t events = table.events().size();
    table.play(R"(
        buy 1 7 99.00 5                 = price outside limits
        sell 1 7 10.00 1001             = not enough holdings
        revoke 1 5                      = order unknown
        withdraw 1 100000.01            = not enough money
    )");
    EXPECT_EQ(table.market().stateHash(), hash);
    EXPECT_EQ(table.events().size(), events);
}

TEST(MatchingLimits, TooMuchIsRefused)
{
    Limits limits;
    limits.openOrdersOfAccount = 2;
    limits.openOrders = 3;
    limits.keysOfAccount = 2;
    limits.accounts = 2;
    limits.collections = 1;
    Table table(limits);
    table.play(R"(
        list 7 10.00 100                = accepted
        list 8 10.00 100                = market full
        account 1                       = accepted
        account 2                       = accepted
        account 3                       = market full
        phase open                      = accepted
        deposit 1 1000.00 key 1         = accepted
        deposit 2 1000.00               = accepted
        buy 1 7 10.00 1 key 2           = accepted 1
        buy 1 7 10.00 1 key 3           = too many actions
        burn 1 key 3                    = too many actions
        burn 1 key 2                    = exists accepted 1
        buy 1 7 10.00 1 key 2           = exists accepted 1
        buy 1 7 10.00 1                 = accepted 2
        buy 1 7 10.00 1                 = too many open orders
        buy 2 7 10.00 1                 = accepted 3
        buy 2 7 10.00 1                 = market full
        revoke 1 1                      = accepted 1
        buy 2 7 10.00 1                 = accepted 4
    )");
}

TEST_F(Matching, DirtyListsNameWhatChangedOnce)
{
    std::vector<CollectionId> books;
    std::vector<AccountId> accounts;
    table.market().takeDirty(books);
    table.market().takeDirtyAccounts(accounts);
    table.market().takeDirty(books);
    EXPECT_TRUE(books.empty());
    table.play(R"(
        list 8 10.00 100                = accepted
        sell 2 7 10.00 2                = accepted 1
        buy 3 7 10.00 1                 = accepted 2
        buy 3 7 99.00 1                 = price outside limits
    )");
    table.market().takeDirty(books);
    EXPECT_EQ(books, (std::vector<CollectionId>{CollectionId(8), CollectionId(7)}));
    table.market().takeDirtyAccounts(accounts);
    EXPECT_EQ(accounts, (std::vector<AccountId>{AccountId(2), AccountId(3)}));
    table.market().takeDirty(books);
    table.market().takeDirtyAccounts(accounts);
    EXPECT_TRUE(books.empty());
    EXPECT_TRUE(accounts.empty());
}

TEST_F(Matching, VolumesAreSplitByWhoCameIn)
{
    table.play(R"(
        sell 2 7 10.00 5                = accepted 1
        buy 1 7 10.00 2                 = accepted 2
        buy 1 7 9.90 4                  = accepted 3
        sell 3 7 9.90 3                 = accepted 4
    )");
    const auto facts = table.market().collection(CollectionId(7));
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->day.outer, Quantity(2));
    EXPECT_EQ(facts->day.inner, Quantity(3));
    EXPECT_EQ(facts->day.deals, 2);
}

TEST_F(Matching, FarPricesFindTheirPlace)
{
    // More prices than the short walk from the best one covers.
    for (int i = 0; i < 40; ++i) {
        const int cents = 900 + (i * 17) % 40;
        PlaceOrder order;
        order.account = AccountId(1);
        order.collection = CollectionId(7);
        order.price = Fen(cents);
        order.quantity = Quantity(1 + i % 3);
        std::vector<Event> out;
        ASSERT_EQ(table.market().apply(order, TimeMs(1), out).status, Status::Accepted);
        ASSERT_EQ(table.market().audit().value_or("content"), "content");
    }
    std::vector<Level> levels;
    table.market().levels(CollectionId(7), Side::Buy, 100, levels);
    ASSERT_EQ(levels.size(), 40u);
    for (std::size_t i = 0; i < levels.size(); ++i)
        EXPECT_EQ(levels[i].price, Fen(939 - static_cast<std::int64_t>(i)));
    table.market().levels(CollectionId(7), Side::Buy, 5, levels);
    EXPECT_EQ(levels.size(), 5u);
}
