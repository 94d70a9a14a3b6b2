#include "exchange/core/table.h"

#include <gtest/gtest.h>

using namespace zvx;
using zvxtest::OpenMarket;
using zvxtest::Table;

TEST(Settlement, EndsOrdersAndCarriesTheCloseOver)
{
    OpenMarket table(2);
    table.play(R"(
        list 8 20.00 100                = accepted
        deposit 1 1000.00               = accepted
        grant 2 7 50 9.00               = accepted
        sell 2 7 10.50 5                = accepted 1
        buy 1 7 10.50 3                 = accepted 2
        buy 1 8 20.00 3                 = accepted 3
        rules 7                         = 10.00 1 20200101
        settle 20191231                 = bad day
        settle 20200101                 = accepted
        done                            = 2 filled 1 ended 3 ended
        rules 7                         = 10.50 2 20200101
        limits 7                        = 9.45 11.55
        day 7                           = 0.00 0.00 0.00 0.00 0 0.00
        rules 8                         = 20.00 2 20200101
        cash 1                          = 968.41 0.00
        holding 2 7                     = 47 0 423.00
        book 7                          = |
        buy 1 7 11.55 1                 = accepted 4
        settle 20200102                 = accepted
        rules 7                         = 10.50 3 20200102
    )");
}

TEST(Settlement, KeysOutliveOneSettlementAndNotTwo)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        deposit 1 5.00 key 1            = accepted
        settle 20200101                 = accepted
        deposit 1 5.00 key 1            = exists accepted
        deposit 1 6.00 key 2            = accepted
        settle 20200101                 = accepted
        deposit 1 6.00 key 2            = exists accepted
        deposit 1 5.00 key 1            = accepted
        cash 1                          = 16.00 0.00
    )");
}

TEST(Settlement, TellsTheDaysFigures)
{
    OpenMarket table(2);
    table.play(R"(
        deposit 1 1000.00               = accepted
        grant 2 7 50 9.00               = accepted
        sell 2 7 10.50 5                = accepted 1
        sell 2 7 9.50 5                 = accepted 2
        buy 1 7 10.50 8                 = accepted 3
        settle 20200102                 = accepted
    )");
    const CollectionSettled *settled = nullptr;
    for (const Event &event : table.events()) {
        if (const auto *found = std::get_if<CollectionSettled>(&event))
            settled = found;
    }
    ASSERT_NE(settled, nullptr);
    EXPECT_EQ(settled->day, TradingDay(20'200'101));
    EXPECT_EQ(settled->session, Sequence(1));
    EXPECT_EQ(settled->open, Fen(950));
    EXPECT_EQ(settled->high, Fen(1050));
    EXPECT_EQ(settled->low, Fen(950));
    EXPECT_EQ(settled->last, Fen(1050));
    EXPECT_EQ(settled->volume, Quantity(8));
    EXPECT_EQ(settled->amount, Fen(7900));
    EXPECT_EQ(settled->previousClose, Fen(1050));
}
