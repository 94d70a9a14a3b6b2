#include "exchange/core/table.h"

#include <gtest/gtest.h>

using namespace zvx;
using zvxtest::OpenMarket;
using zvxtest::Table;

TEST(Ledger, MoneyGoesInAndOut)
{
    Table table;
    table.play(R"(
        deposit 1 5.00                  = account unknown
        account 1                       = accepted
        account 1                       = already there
        account 0                       = account unknown
        account 2 100001                = bad rate
        account 2 100000                = accepted
        cash 1                          = 0.00 0.00
        deposit 1 100.30                = accepted
        deposit 1 0.00                  = bad amount
        withdraw 1 0.00                 = bad amount
        withdraw 1 100.31               = not enough money
        withdraw 1 0.31                 = accepted
        cash 1                          = 99.99 0.00
        withdraw 1 99.99                = accepted
        cash 1                          = 0.00 0.00
    )");
}

TEST(Ledger, MoneyOfTheWholeMarketStaysWithinTheBound)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        account 2                       = accepted
        deposit 1 90000000000000.01     = bad amount
        deposit 1 89999999999999.99     = accepted
        deposit 2 0.02                  = bad amount
        deposit 2 0.01                  = accepted
        deposit 2 0.01                  = bad amount
        withdraw 1 1.00                 = accepted
        deposit 2 1.00                  = accepted
    )");
}

TEST(Ledger, PiecesAreGrantedUpToTheIssue)
{
    Table table;
    table.play(R"(
        account 1                       = accepted
        grant 1 7 5 9.00                = collection unknown
        list 7 10.00 100                = accepted
        grant 1 7 0 9.00                = bad quantity
        grant 1 7 101 9.00              = bad quantity
        grant 1 7 60 9.00               = accepted
        grant 1 7 41 9.00               = bad quantity
        grant 1 7 40 131072.00          = bad amount
        grant 1 7 40 131071.99          = accepted
        holding 1 7                     = 100 0 5243419.60
        grant 1 7 1 9.00                = bad quantity
    )");
}

TEST(Ledger, TheTicketsTenPiecesCostWhatTheTicketSays)
{
    // One piece at 10.00 costs 10.03 with the fee: 100.30 buys ten, 100.29 nine.
    OpenMarket table(2);
    table.play(R"(
        deposit 1 100.30                = accepted
        deposit 2 100.29                = accepted
        buy 1 7 10.00 11                = not enough money
        buy 1 7 10.00 10                = accepted 1
        cash 1                          = 0.00 100.30
        buy 2 7 10.00 10                = not enough money
        buy 2 7 10.00 9                 = accepted 2
        cash 2                          = 10.02 90.27
        revoke 1 1                      = accepted 1
        cash 1                          = 100.30 0.00
    )");
}

TEST(Ledger, MoneyThatIsReallyMissingIsRefused)
{
    Table table;
    table.play(R"(
        list 7 10000.00 100000          = accepted
        account 1                       = accepted
        phase open                      = accepted
        deposit 1 10029999.95           = accepted
        buy 1 7 10000.00 1000           = accepted 1
        revoke 1 1                      = accepted 1
        withdraw 1 3.00                 = accepted
        buy 1 7 10000.00 1000           = not enough money
    )");
}

TEST(Ledger, WithoutAFeeEveryFenCounts)
{
    Table table;
    table.play(R"(
        list 7 10.00 100                = accepted
        account 1 0                     = accepted
        phase open                      = accepted
        deposit 1 99.99                 = accepted
        buy 1 7 10.00 10                = not enough money
        deposit 1 0.01                  = accepted
        buy 1 7 10.00 10                = accepted 1
        cash 1                          = 0.00 100.00
        list 8 10000.00 100000          = accepted
        account 2 0                     = accepted
        deposit 2 9999999.99            = accepted
        buy 2 8 10000.00 1000           = not enough money
        deposit 2 0.01                  = accepted
        buy 2 8 10000.00 1000           = accepted 2
        cash 2                          = 0.00 10000000.00
    )");
}

TEST(Ledger, FeesAreRoundedOverTheWholeOrderAndNotEachFill)
{
    // Each piece alone would owe 0.3 of a fen, which is nothing; ten of them owe 3 fen.
    Table table;
    table.play(R"(
        list 7 1.00 100 limit 900000    = accepted
        account 1                       = accepted
        account 2                       = accepted
        phase open                      = accepted
        deposit 1 10.03                 = accepted
        grant 2 7 10 1.00               = accepted
        buy 1 7 1.00 10                 = accepted 1
        cash 1                          = 0.00 10.03
        sell 2 7 1.00 1                 = accepted 2
        fees                            = 0.00
        sell 2 7 1.00 1                 = accepted 3
        fees                            = 0.01
        sell 2 7 1.00 8                 = accepted 4
        fees                            = 0.05
        cash 1                          = 0.00 0.00
        holding 1 7                     = 10 0 10.03
        cash 2                          = 9.98 0.00
    )");
}

TEST(Ledger, ABetterPriceGivesTheDifferenceBackAtOnce)
{
    OpenMarket table(2);
    table.play(R"(
        deposit 1 110.33                = accepted
        grant 2 7 10 9.00               = accepted
        sell 2 7 9.50 4                 = accepted 1
        buy 1 7 11.00 10                = accepted 2
        deals                           = 1<2 9.50x4
        cash 1                          = 6.02 66.20
        revoke 1 2                      = accepted 1
        cash 1                          = 72.22 0.00
        cash 2                          = 37.89 0.00
        fees                            = 0.22
    )");
}

TEST(Ledger, PartlyFilledThenRevokedReleasesExactlyTheRest)
{
    OpenMarket table(2);
    table.play(R"(
        deposit 1 100.30                = accepted
        grant 2 7 3 9.00                = accepted
        buy 1 7 10.00 10                = accepted 1
        sell 2 7 10.00 3                = accepted 2
        cash 1                          = 0.00 70.21
        revoke 1 1                      = accepted 1
        cash 1                          = 70.21 0.00
        cash 2                          = 29.91 0.00
        fees                            = 0.18
    )");
}

TEST(Ledger, FrozenPiecesCannotBeSoldTwice)
{
    OpenMarket table(1);
    table.play(R"(
        sell 1 7 10.00 1                = not enough holdings
        grant 1 7 10 9.00               = accepted
        sell 1 7 10.00 7                = accepted 1
        holding 1 7                     = 10 7 90.00
        sell 1 7 10.00 4                = not enough holdings
        sell 1 7 10.00 3                = accepted 2
        sell 1 7 10.00 1                = not enough holdings
        revoke 1 1                      = accepted 1
        holding 1 7                     = 10 3 90.00
        sell 1 7 10.00 7                = accepted 3
    )");
}

TEST(Ledger, ReservedMoneyCannotLeave)
{
    OpenMarket table(1);
    table.play(R"(
        deposit 1 20.00                 = accepted
        buy 1 7 10.00 1                 = accepted 1
        withdraw 1 9.98                 = not enough money
        withdraw 1 9.97                 = accepted
        buy 1 7 9.00 1                  = not enough money
    )");
}

TEST(Ledger, FeesGoByAccountAndCollection)
{
    Table table;
    table.play(R"(
        list 7 10.00 100                = accepted
        list 8 10.00 100                = accepted
        account 1                       = accepted
        rate 1 7 0                      = accepted
        rate 9 7 0                      = account unknown
        rate 1 -1 0                     = collection unknown
        rate 1 7 100001                 = bad rate
        phase open                      = accepted
        deposit 1 1000.00               = accepted
        buy 1 7 10.00 10                = accepted 1
        cash 1                          = 900.00 100.00
        buy 1 8 10.00 10                = accepted 2
        cash 1                          = 799.70 200.30
        rate 1 0 10000                  = accepted
        buy 1 8 10.00 10                = accepted 3
        cash 1                          = 698.70 301.30
        revoke 1 2                      = accepted 1
        cash 1                          = 799.00 201.00
    )");
}

TEST(Ledger, TheCostGoesWithThePieces)
{
    OpenMarket table(2);
    table.play(R"(
        deposit 2 1000.00               = accepted
        grant 1 7 3 10.00               = accepted
        holding 1 7                     = 3 0 30.00
        sell 1 7 10.00 1                = accepted 1
        buy 2 7 10.00 1                 = accepted 2
        holding 1 7                     = 2 0 20.00
        holding 2 7                     = 1 0 10.03
        sell 1 7 10.00 2                = accepted 3
        buy 2 7 10.00 2                 = accepted 4
        holding 1 7                     = 0 0 0.00
        holding 2 7                     = 3 0 30.09
    )");
}
