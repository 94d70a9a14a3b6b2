#include "exchange/core/table.h"

#include <gtest/gtest.h>

using namespace zvx;
using zvxtest::OpenMarket;
using zvxtest::Table;

TEST(Transfers, MoneyThatGoesOutIsFrozenUntilTheBankHasPaid)
{
    Table table;
    table.play(R"(
        out 1 5.00                      = account unknown
        account 1                       = accepted
        deposit 1 100.00                = accepted
        out 1 30.00                     = accepted 1
        cash 1                          = 70.00 30.00
        transfers                       = 1:out:1:30.00
        out 1 70.01                     = not enough money
        out 1 70.00                     = accepted 2
        cash 1                          = 0.00 100.00
        withdraw 1 0.01                 = not enough money
        bank 1 done                     = accepted
        cash 1                          = 0.00 70.00
        bank 2 refused                  = accepted
        cash 1                          = 70.00 0.00
        transfers                       =
    )");
}

TEST(Transfers, MoneyThatComesInIsThereWhenTheBankHasSaidSo)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        in 1 30.00                      = accepted 1
        cash 1                          = 0.00 0.00
        in 1 20.00                      = accepted 2
        transfers                       = 1:in:1:30.00 2:in:1:20.00
        bank 2 refused                  = accepted
        cash 1                          = 0.00 0.00
        bank 1 done                     = accepted
        cash 1                          = 30.00 0.00
    )");
}

TEST(Transfers, TheFirstWordOfTheBankCounts)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        deposit 1 10.00                 = accepted
        bank 1 done                     = transfer unknown
        bank 0 done                     = transfer unknown
        bank -1 done                    = transfer unknown
        out 1 4.00                      = accepted 1
        in 1 3.00                       = accepted 2
        bank 1 refused                  = accepted
        bank 1 refused                  = transfer done
        bank 1 done                     = transfer done
        bank 2 done                     = accepted
        bank 2 refused                  = transfer done
        bank 2 done                     = transfer done
        bank 3 done                     = transfer unknown
        cash 1                          = 13.00 0.00
    )");
}

TEST(Transfers, AKeyBeginsOneTransfer)
{
    OpenMarket table(2);
    table.play(R"(
        deposit 1 10.00                 = accepted
        out 1 4.00 key 1                = accepted 1
        out 1 4.00 key 1                = exists accepted
        out 1 4.01 key 1                = key differs
        in 1 4.00 key 1                 = key differs
        withdraw 1 4.00 key 1           = key differs
        burn 1 key 1                    = exists accepted
        out 2 4.00 key 1                = not enough money
        deposit 2 10.00                 = accepted
        out 2 4.00 key 1                = exists not enough money
        burn 2 key 2                    = key burnt
        in 2 4.00 key 2                 = key burnt
        bank 1 done                     = accepted
        out 1 4.00 key 1                = exists accepted
        cash 1                          = 6.00 0.00
        cash 2                          = 10.00 0.00
    )");
}

TEST(Transfers, RefusalsOfOtherRulesStandUnderTheKeyAsTheMarketsOwn)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        in 1 5.00 key 1 no-card         = no bank card
        in 1 5.00 key 1                 = exists no bank card
        burn 1 key 1                    = exists no bank card
        in 1 5.00 key 2 limit           = above transfer limit
        in 1 5.00 key 2                 = exists above transfer limit
        in 1 5.00 key 3                 = accepted 1
        in 1 5.00 key 3 day-limit       = exists accepted
        in 1 6.00 key 3 day-limit       = key differs
        in 1 5.00 key 4 day-limit       = above day limit
        in 1 0.00 key 5 day-limit       = above day limit
        freeze 1 on                     = accepted
        in 1 5.00 key 6 day-limit       = account frozen
        transfers                       = 1:in:1:5.00
    )");
}

TEST(Transfers, AmountsThatNobodyCanMoveAreRefused)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        in 1 0.00                       = bad amount
        out 1 0.00                      = bad amount
        in 1 90000000000000.01          = bad amount
        out 1 90000000000000.01         = bad amount
        in 1 89999999999999.00          = accepted 1
        deposit 1 1.01                  = bad amount
        in 1 1.01                       = bad amount
        deposit 1 0.50                  = accepted
        in 1 0.51                       = bad amount
        in 1 0.50                       = accepted 2
        bank 1 done                     = accepted
        deposit 1 0.01                  = bad amount
        bank 2 done                     = accepted
        cash 1                          = 90000000000000.00 0.00
        out 1 1.00                      = accepted 3
        in 1 0.01                       = bad amount
        bank 3 done                     = accepted
        in 1 1.00                       = accepted 4
    )");
}

TEST(Transfers, AFrozenAccountBeginsNoneAndGetsItsBanksWord)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        deposit 1 10.00                 = accepted
        out 1 4.00                      = accepted 1
        in 1 2.00                       = accepted 2
        freeze 1 on                     = accepted
        out 1 1.00                      = account frozen
        in 1 1.00                       = account frozen
        bank 1 refused                  = accepted
        bank 2 done                     = accepted
        cash 1                          = 12.00 0.00
    )");
}

TEST(Transfers, OnlySoManyOfAnAccountWaitForTheBank)
{
    Limits limits;
    limits.transfersOfAccount = 2;
    Table table(limits);
    table.play(R"(
        account 1                       = accepted
        account 2                       = accepted
        deposit 1 10.00                 = accepted
        in 1 1.00                       = accepted 1
        out 1 1.00                      = accepted 2
        in 1 1.00                       = too many transfers
        out 1 1.00                      = too many transfers
        in 2 1.00                       = accepted 3
        bank 1 refused                  = accepted
        out 1 1.00                      = accepted 4
    )");
}

TEST(Transfers, ASettlementEndsNoTransferAndItsMoneyStaysFrozen)
{
    OpenMarket table(2);
    table.play(R"(
        deposit 1 100.00                = accepted
        out 1 40.00 key 1               = accepted 1
        in 1 5.00                       = accepted 2
        buy 1 7 10.00 5                 = accepted 1
        cash 1                          = 9.85 90.15
        settle 20200101                 = accepted
        cash 1                          = 60.00 40.00
        settle 20200101                 = accepted
        settle 20200101                 = accepted
        transfers                       = 1:out:1:40.00 2:in:1:5.00
        bank 1 done                     = accepted
        bank 1 refused                  = transfer done
        bank 2 done                     = accepted
        cash 1                          = 65.00 0.00
    )");
}

TEST(Transfers, TheBankIsNeverAskedUnderAnIdThatIsNone)
{
    Market market;
    std::vector<Event> events;
    market.apply(OpenAccount{AccountId(1), kDefaultFee, {}}, TimeMs(1), events);
    const std::size_t before = events.size();
    EXPECT_EQ(
        market.apply(BeginTransfer{AccountId(1), true, Fen(5), {}, 0, {0, 1}}, TimeMs(1), events)
            .status,
        Status::BadKey);
    EXPECT_EQ(events.size(), before);
}

/** A market of the time before transfers has the state that it had then. */
TEST(Transfers, AMarketWithoutAnyHasItsFormerHash)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        in 1 5.00 no-card               = no bank card
    )");
    const std::uint64_t before = table.market().stateHash();
    table.play("in 1 5.00               = accepted 1");
    EXPECT_NE(table.market().stateHash(), before);
    const std::uint64_t waiting = table.market().stateHash();
    table.play("bank 1 refused          = accepted");
    EXPECT_NE(table.market().stateHash(), waiting);
    EXPECT_NE(table.market().stateHash(), before) << "its number is used up";
}
