#include "exchange/core/table.h"

#include <gtest/gtest.h>

using namespace zvx;
using zvxtest::OpenMarket;
using zvxtest::Table;

TEST(Deliveries, PiecesAreFrozenUntilTheyAreSentAndThenLeaveTheMarket)
{
    OpenMarket table(1);
    table.play(R"(
        grant 1 7 10 3.01               = accepted
        take 1 7 4                      = accepted 1
        holding 1 7                     = 10 4 30.10
        deliveries                      = 1:1:7:4
        take 1 7 7                      = not enough holdings
        sell 1 7 10.00 7                = not enough holdings
        sell 1 7 10.00 6                = accepted 1
        carrier 1 preparing             = accepted
        holding 1 7                     = 10 10 30.10
        deliveries                      = 1:1:7:4:preparing
        carrier 1 sent                  = accepted
        holding 1 7                     = 6 6 18.06
        deliveries                      =
    )");
}

TEST(Deliveries, WhatIsGivenBackIsFreeAgain)
{
    OpenMarket table(1);
    table.play(R"(
        grant 1 7 10 3.00               = accepted
        take 1 7 10                     = accepted 1
        keep 1 1                        = accepted
        holding 1 7                     = 10 0 30.00
        take 1 7 10                     = accepted 2
        carrier 2 refused               = accepted
        take 1 7 10                     = accepted 3
        carrier 3 preparing             = accepted
        carrier 3 refused               = accepted
        holding 1 7                     = 10 0 30.00
        sell 1 7 10.00 10               = accepted 1
    )");
}

TEST(Deliveries, ACarrierOnlyGoesForward)
{
    OpenMarket table(1);
    table.play(R"(
        grant 1 7 10 3.00               = accepted
        carrier 0 sent                  = delivery unknown
        carrier -1 sent                 = delivery unknown
        carrier 1 sent                  = delivery unknown
        take 1 7 1                      = accepted 1
        carrier 1 cancelled             = delivery done
        carrier 1 preparing             = accepted
        carrier 1 preparing             = delivery done
        carrier 1 sent                  = accepted
        carrier 1 sent                  = delivery done
        carrier 1 refused               = delivery done
        carrier 1 preparing             = delivery done
        take 1 7 1                      = accepted 2
        carrier 2 sent                  = accepted
        holding 1 7                     = 8 0 24.00
    )");
}

TEST(Deliveries, OnlyItsOwnerTakesARequestBackAndOnlyInTime)
{
    OpenMarket table(2);
    table.play(R"(
        grant 1 7 10 3.00               = accepted
        keep 1 1                        = delivery unknown
        take 1 7 1                      = accepted 1
        keep 1 0                        = delivery unknown
        keep 2 1                        = delivery unknown
        keep 9 1                        = account unknown
        keep 1 2                        = delivery unknown
        keep 1 1                        = accepted
        keep 1 1                        = delivery done
        take 1 7 1                      = accepted 2
        carrier 2 preparing             = accepted
        keep 1 2                        = delivery done
        keep 2 2                        = delivery unknown
        carrier 2 sent                  = accepted
        keep 1 2                        = delivery done
        holding 1 7                     = 9 0 27.00
    )");
}

TEST(Deliveries, AKeyAsksOnceAndTakesBackOnce)
{
    OpenMarket table(1);
    table.play(R"(
        grant 1 7 10 3.00               = accepted
        take 1 7 4 key 1                = accepted 1
        take 1 7 4 key 1                = exists accepted
        take 1 7 5 key 1                = key differs
        keep 1 1 key 1                  = key differs
        burn 1 key 1                    = exists accepted
        keep 1 1 key 2                  = accepted
        keep 1 1 key 2                  = exists accepted
        keep 1 1 key 3                  = delivery done
        take 1 7 11 key 4               = not enough holdings
        grant 1 7 10 3.00               = accepted
        take 1 7 11 key 4               = exists not enough holdings
        burn 1 key 5                    = key burnt
        take 1 7 1 key 5                = key burnt
        holding 1 7                     = 20 0 60.00
    )");
}

TEST(Deliveries, PiecesThatNobodyCanTakeAreRefused)
{
    OpenMarket table(2);
    table.play(R"(
        take 3 7 1                      = account unknown
        take 1 8 1                      = collection unknown
        take 1 7 1                      = not enough holdings
        grant 1 7 10 3.00               = accepted
        take 1 7 0                      = bad quantity
        take 1 7 -1                     = bad quantity
        take 1 7 100000001              = bad quantity
        take 1 7 11                     = not enough holdings
        take 2 7 1                      = not enough holdings
        freeze 1 on                     = accepted
        take 1 7 1                      = account frozen
        freeze 1 off                    = accepted
        take 1 7 10                     = accepted 1
        freeze 1 on                     = accepted
        keep 1 1                        = account frozen
        carrier 1 sent                  = accepted
        holding 1 7                     = 0 0 0.00
    )");
}

TEST(Deliveries, NeitherAClosedMarketNorASuspendedCollectionHoldsGoodsBack)
{
    OpenMarket table(1);
    table.play(R"(
        grant 1 7 10 3.00               = accepted
        phase closed                    = accepted
        suspend 7 on                    = accepted
        take 1 7 2                      = accepted 1
        settle 20200101                 = accepted
        settle 20200101                 = accepted
        deliveries                      = 1:1:7:2
        keep 1 1                        = accepted
        take 1 7 2                      = accepted 2
        settle 20200102                 = accepted
        carrier 2 sent                  = accepted
        holding 1 7                     = 8 0 24.00
    )");
}

TEST(Deliveries, SentPiecesAreNeverGrantedAgain)
{
    OpenMarket table(1, 10);
    table.play(R"(
        grant 1 7 10 1.00               = accepted
        take 1 7 4                      = accepted 1
        carrier 1 sent                  = accepted
        grant 1 7 1 1.00                = bad quantity
        take 1 7 6                      = accepted 2
        carrier 2 refused               = accepted
        grant 1 7 1 1.00                = bad quantity
    )");
    const CollectionView facts = *table.market().collection(CollectionId(7));
    EXPECT_EQ(facts.issued, Quantity(10));
    EXPECT_EQ(facts.circulating, Quantity(6));
    EXPECT_EQ(facts.sent, Quantity(4));
}

TEST(Deliveries, OnlySoManyOfAnAccountAreUnderWay)
{
    Limits limits;
    limits.deliveriesOfAccount = 2;
    Table table(limits);
    table.play(R"(
        list 7 10.00 100                = accepted
        account 1                       = accepted
        account 2                       = accepted
        grant 1 7 10 1.00               = accepted
        grant 2 7 10 1.00               = accepted
        take 1 7 1                      = accepted 1
        take 1 7 1                      = accepted 2
        take 1 7 1                      = too many deliveries
        take 2 7 1                      = accepted 3
        carrier 1 preparing             = accepted
        take 1 7 1                      = too many deliveries
        carrier 1 sent                  = accepted
        take 1 7 1                      = accepted 4
    )");
}

TEST(Deliveries, NoParcelGoesUnderAnIdThatIsNone)
{
    OpenMarket table(1);
    table.play("grant 1 7 10 1.00 = accepted");
    std::vector<Event> events;
    EXPECT_EQ(table.market()
                  .apply(RequestDelivery{AccountId(1), CollectionId(7), Quantity(1), {}, {0, 1}},
                         TimeMs(1), events)
                  .status,
              Status::BadKey);
    EXPECT_TRUE(events.empty());
}

/** A market of the time before deliveries has the state that it had then. */
TEST(Deliveries, AMarketWithoutAnyHasItsFormerHash)
{
    OpenMarket table(1);
    table.play("grant 1 7 10 1.00 = accepted");
    const std::uint64_t before = table.market().stateHash();
    table.play("take 1 7 11       = not enough holdings");
    EXPECT_EQ(table.market().stateHash(), before);
    table.play("take 1 7 1        = accepted 1");
    const std::uint64_t waiting = table.market().stateHash();
    EXPECT_NE(waiting, before);
    table.play("carrier 1 preparing = accepted");
    EXPECT_NE(table.market().stateHash(), waiting);
    table.play("carrier 1 refused = accepted");
    EXPECT_NE(table.market().stateHash(), before) << "its number is used up";
}

TEST(Deliveries, ACheckpointHoldsThemAndWhatWasSent)
{
    OpenMarket table(2);
    table.play(R"(
        grant 1 7 10 3.33               = accepted
        grant 2 7 5 1.00                = accepted
        take 1 7 3 key 1                = accepted 1
        take 2 7 2                      = accepted 2
        take 1 7 1                      = accepted 3
        carrier 1 sent                  = accepted
        carrier 2 preparing             = accepted
    )");
    const std::string bytes = table.market().checkpoint();
    Market again = Market::restore(bytes);
    EXPECT_EQ(again.stateHash(), table.market().stateHash());
    EXPECT_EQ(again.checkpoint(), bytes);
    EXPECT_EQ(again.lastDelivery(), DeliveryNumber(3));
    EXPECT_EQ(again.collection(CollectionId(7))->sent, Quantity(3));
    std::vector<DeliveryView> deliveries;
    again.deliveries(deliveries);
    ASSERT_EQ(deliveries.size(), 2u);
    EXPECT_EQ(deliveries[0].delivery, DeliveryNumber(2));
    EXPECT_EQ(deliveries[0].stage, DeliveryStage::Preparing);
    EXPECT_EQ(deliveries[0].account, AccountId(2));
    EXPECT_EQ(deliveries[1].delivery, DeliveryNumber(3));
    EXPECT_EQ(deliveries[1].stage, DeliveryStage::Requested);
    std::vector<DeliveryView> before;
    table.market().deliveries(before);
    EXPECT_TRUE(deliveries[1].parcel == before[1].parcel);
}
