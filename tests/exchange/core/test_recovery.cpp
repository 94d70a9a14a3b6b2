#include "exchange/core/eventcodec.h"
#include "exchange/core/table.h"

#include <gtest/gtest.h>

#include <map>

using namespace zvx;
using zvxtest::Table;

namespace {

/** A market in which everything that can be stored is there. */
class Recovery : public testing::Test
{
protected:
    Recovery()
    {
        table.play(R"(
            list 7 10.00 1000           = accepted
            list 8 10.00 1000 tick 5    = accepted
            account 5                   = accepted
            account 2 0                 = accepted
            account 3                   = accepted
            rate 5 8 10000              = accepted
            phase open                  = accepted
            deposit 5 5000.00 key 1     = accepted
            deposit 2 5000.00           = accepted
            grant 3 7 100 9.00          = accepted
            sell 3 7 10.10 2            = accepted 1
            buy 5 7 10.10 2             = accepted 2
            grant 3 8 100 9.00          = accepted
            sell 3 8 10.10 2            = accepted 3
            buy 5 8 10.10 2             = accepted 4
            settle 20200101             = accepted
            suspend 8 on                = accepted
            freeze 2 on                 = accepted
            buy 5 7 10.00 20 key 2      = accepted 5
            sell 3 7 10.00 5            = accepted 6
            sell 3 7 9.99 3 key 9       = accepted 7
            buy 5 7 9.98 20             = accepted 8
            sell 3 7 10.40 40           = accepted 9
            buy 2 7 10.00 1 key 3       = account frozen
            out 5 70.00 key 4           = accepted 1
            in 5 30.00 key 5            = accepted 2
            out 3 20.00                 = accepted 3
            in 3 10.00                  = accepted 4
            bank 1 done                 = accepted
            bank 4 refused              = accepted
            out 5 5000.00 key 6         = not enough money
            take 3 7 5 key 7            = accepted 1
            take 3 7 4                  = accepted 2
            take 3 8 3                  = accepted 3
            take 3 8 2                  = accepted 4
            carrier 2 preparing         = accepted
            carrier 3 sent              = accepted
            keep 3 4                    = accepted
        )");
    }

    static void play(Market &market, const std::vector<Event> &events)
    {
        for (const Event &event : events)
            market.replay(event);
    }

    Table table;
};

/** Nothing is negative, and every piece in circulation is held by somebody. */
bool addsUp(const Market &market)
{
    std::map<std::int64_t, std::int64_t> held;
    for (const AccountId id : market.accounts()) {
        const AccountView account = *market.account(id);
        if (account.available < Fen(0) || account.frozenCash < Fen(0))
            return false;
        std::vector<HoldingView> holdings;
        market.holdingsOf(id, holdings);
        for (const HoldingView &holding : holdings) {
            if (holding.quantity < holding.frozen || holding.frozen < Quantity(0))
                return false;
            held[holding.collection.value()] += holding.quantity.value();
        }
    }
    for (const CollectionId id : market.collections()) {
        if (held[id.value()] != market.collection(id)->circulating.value())
            return false;
    }
    return true;
}

/** What the market answers next: nothing that decides may be lost. */
void expectSameFuture(Market &a, Market &b)
{
    const Command commands[]
        = {Deposit{AccountId(5), Fen(500'000), {0, 1}},
           PlaceOrder{AccountId(5), CollectionId(7), Side::Buy, Fen(1040), Quantity(15), {0, 5}},
           PlaceOrder{AccountId(3), CollectionId(7), Side::Sell, Fen(900), Quantity(30), {}},
           RevokeOrders{AccountId(5), {OrderNumber(8)}, {}},
           EndTransfer{TransferNumber(2), true},
           EndTransfer{TransferNumber(3), false},
           EndTransfer{TransferNumber(1), false},
           BeginTransfer{AccountId(5), false, Fen(70), TransferId{1, 1}, 0, {0, 4}},
           BeginTransfer{AccountId(5), false, Fen(70), TransferId{1, 2}, 0, {0, 8}},
           RequestDelivery{AccountId(3), CollectionId(7), Quantity(5), ParcelId{1, 3}, {0, 7}},
           RequestDelivery{AccountId(3), CollectionId(8), Quantity(1), ParcelId{1, 4}, {0, 10}},
           CancelDelivery{AccountId(3), DeliveryNumber(2), {}},
           CancelDelivery{AccountId(3), DeliveryNumber(1), {}},
           AdvanceDelivery{DeliveryNumber(2), DeliveryStage::Sent},
           GrantHolding{AccountId(3), CollectionId(8), Quantity(898), Fen(1), {}},
           SettleDay{TradingDay(20'200'102)}};
    for (const Command &command : commands) {
        std::vector<Event> left;
        std::vector<Event> right;
        const Result x = a.apply(command, TimeMs(9), left);
        const Result y = b.apply(command, TimeMs(9), right);
        EXPECT_STREQ(name(x.status), name(y.status));
        ASSERT_EQ(left.size(), right.size());
        for (std::size_t i = 0; i < left.size(); ++i)
            EXPECT_TRUE(sameEvent(left[i], right[i])) << describe(left[i]);
        EXPECT_EQ(a.stateHash(), b.stateHash());
    }
}

} // namespace

TEST_F(Recovery, EventsCheckpointAndLifeGiveTheSameMarket)
{
    Market replayed;
    play(replayed, table.events());
    EXPECT_EQ(replayed.stateHash(), table.market().stateHash());
    const std::string bytes = table.market().checkpoint();
    Market restored = Market::restore(bytes);
    EXPECT_EQ(restored.stateHash(), table.market().stateHash());
    EXPECT_EQ(restored.checkpoint(), bytes);
    EXPECT_EQ(replayed.checkpoint(), bytes);
    EXPECT_EQ(restored.accounts(), table.market().accounts());

    Market again = Market::restore(bytes);
    expectSameFuture(restored, replayed);
    expectSameFuture(again, table.market());
}

TEST_F(Recovery, ACheckpointTakesLaterEvents)
{
    for (std::size_t cut = 0; cut < table.events().size(); cut += 3) {
        Market early;
        for (std::size_t i = 0; i < cut; ++i)
            early.replay(table.events()[i]);
        // A cut inside a command may leave an order that is filled and not yet done.
        if (early.audit())
            continue;
        Market late = Market::restore(early.checkpoint());
        for (std::size_t i = cut; i < table.events().size(); ++i)
            late.replay(table.events()[i]);
        EXPECT_EQ(late.stateHash(), table.market().stateHash()) << "cut at " << cut;
    }
}

TEST_F(Recovery, AFreshMarketIsAllDirtyAfterARestore)
{
    Market restored = Market::restore(table.market().checkpoint());
    std::vector<CollectionId> books;
    restored.takeDirty(books);
    EXPECT_EQ(books.size(), 2u);
}

TEST_F(Recovery, TheHashSeesEveryPartOfTheState)
{
    const std::uint64_t before = table.market().stateHash();
    const Command commands[] = {
        SetPhase{false},
        SuspendCollection{CollectionId(8), false},
        FreezeAccount{AccountId(2), false},
        SetFeeRate{AccountId(3), CollectionId(7), PartsPerMillion(1)},
        SetFeeRate{AccountId(3), CollectionId(0), PartsPerMillion(1)},
        Deposit{AccountId(3), Fen(1), {}},
        Withdraw{AccountId(5), Fen(1), {}},
        GrantHolding{AccountId(3), CollectionId(8), Quantity(1), Fen(1), {}},
        PlaceOrder{AccountId(5), CollectionId(7), Side::Buy, Fen(1000), Quantity(1), {}},
        PlaceOrder{AccountId(5), CollectionId(7), Side::Buy, Fen(1), Quantity(1), {0, 77}},
        RevokeOrders{AccountId(5), {OrderNumber(8)}, {}},
        SettleDay{TradingDay(20'200'101)},
        OpenAccount{AccountId(9), kDefaultFee, {}},
        BeginTransfer{AccountId(5), true, Fen(1), TransferId{1, 1}},
        BeginTransfer{AccountId(5), false, Fen(1), TransferId{1, 1}},
        EndTransfer{TransferNumber(2), true},
        EndTransfer{TransferNumber(2), false},
        EndTransfer{TransferNumber(3), true},
        EndTransfer{TransferNumber(3), false},
        RequestDelivery{AccountId(3), CollectionId(7), Quantity(1), ParcelId{1, 1}},
        CancelDelivery{AccountId(3), DeliveryNumber(1)},
        AdvanceDelivery{DeliveryNumber(1), DeliveryStage::Preparing},
        AdvanceDelivery{DeliveryNumber(1), DeliveryStage::Sent},
        AdvanceDelivery{DeliveryNumber(2), DeliveryStage::Sent},
        AdvanceDelivery{DeliveryNumber(2), DeliveryStage::Refused},
    };
    for (const Command &command : commands) {
        Market market = Market::restore(table.market().checkpoint());
        std::vector<Event> out;
        market.apply(command, TimeMs(1), out);
        ASSERT_FALSE(out.empty()) << command.index();
        EXPECT_NE(market.stateHash(), before) << "command of kind " << command.index();
    }
}

TEST_F(Recovery, EventsThatCannotFollowAreRefused)
{
    const std::vector<Event> &events = table.events();
    for (std::size_t missing = 0; missing < events.size(); ++missing) {
        Market market;
        bool same = true;
        try {
            for (std::size_t i = 0; i < events.size(); ++i) {
                if (i != missing)
                    market.replay(events[i]);
            }
            same = market.stateHash() == table.market().stateHash();
        } catch (const Damaged &) {
            same = false;
        }
        EXPECT_FALSE(same) << "nobody missed " << describe(events[missing]);
    }
    // The same event twice is refused where it moves money, pieces or numbers.
    for (const Event &event : events) {
        if (!std::holds_alternative<OrderAccepted>(event) && !std::holds_alternative<Deal>(event)
            && !std::holds_alternative<OrderDone>(event)
            && !std::holds_alternative<CashMoved>(event)
            && !std::holds_alternative<TransferBegun>(event)
            && !std::holds_alternative<TransferEnded>(event)
            && !std::holds_alternative<DeliveryRequested>(event)
            && !std::holds_alternative<DeliveryMoved>(event))
            continue;
        Market market;
        play(market, events);
        EXPECT_THROW(market.replay(event), Damaged) << describe(event);
    }
}

TEST_F(Recovery, ChangedEventsAreRefusedOrKeepEveryInvariant)
{
    std::uint64_t state = 3;
    const auto next = [&state](std::size_t bound) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::size_t>((state >> 33) % bound);
    };
    std::vector<std::string> stored;
    for (const Event &event : table.events()) {
        stored.emplace_back();
        encode(event, stored.back());
    }
    int refused = 0;
    int taken = 0;
    for (int round = 0; round < 6000; ++round) {
        const std::size_t changed = next(stored.size());
        Market market;
        try {
            for (std::size_t i = 0; i < stored.size(); ++i) {
                std::string bytes = stored[i];
                if (i == changed)
                    bytes[2 + next(bytes.size() - 2)] = static_cast<char>(next(256));
                std::string_view view = bytes;
                Event event;
                if (!decode(view, event))
                    throw Damaged("bytes");
                market.replay(event);
            }
            ++taken;
            // What was taken may be another story, but money and pieces add up in it.
            EXPECT_TRUE(addsUp(market)) << "event " << changed << ", round " << round;
        } catch (const Damaged &) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 2000);
    EXPECT_GT(taken, 100);
}

TEST_F(Recovery, ChangedCheckpointsAreRefused)
{
    const std::string bytes = table.market().checkpoint();
    EXPECT_THROW(Market::restore({}), Damaged);
    EXPECT_THROW(Market::restore("zvck"), Damaged);
    EXPECT_THROW(Market::restore(bytes + '\0'), Damaged);
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_THROW(Market::restore(std::string_view(bytes).substr(0, length)), Damaged);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::string changed = bytes;
        changed[i] = static_cast<char>(changed[i] ^ 1);
        EXPECT_THROW(Market::restore(changed), Damaged) << "byte " << i;
    }
}

/** What other cards, ids and keys a waiting transfer could have had: each is another state. */
TEST_F(Recovery, AWaitingTransferComesBackWithAllThatTheBankIsAskedWith)
{
    std::vector<TransferView> before;
    table.market().transfers(before);
    ASSERT_EQ(before.size(), 2u);
    std::vector<TransferView> after;
    Market::restore(table.market().checkpoint()).transfers(after);
    ASSERT_EQ(after.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(after[i].transfer, before[i].transfer);
        EXPECT_EQ(after[i].account, before[i].account);
        EXPECT_EQ(after[i].incoming, before[i].incoming);
        EXPECT_EQ(after[i].amount, before[i].amount);
        EXPECT_EQ(after[i].bank, before[i].bank);
        EXPECT_EQ(after[i].card, before[i].card);
        EXPECT_EQ(after[i].key, before[i].key);
        EXPECT_EQ(after[i].at, before[i].at);
    }
    EXPECT_EQ(before[0].card, 7u);
    EXPECT_FALSE(before[0].bank.isNull());
    EXPECT_EQ(before[0].key, (ActionKey{0, 5}));
}
