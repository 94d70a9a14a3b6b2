#include "exchange/store/marketwriter.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

namespace zvx {
namespace {

using test::Counter;
using test::Gate;
using test::HookedStore;
using test::kMorning;
using test::TempFolder;

/// A writer that notes in one list what it tells of accounts and whom it answers.
class Desk
{
public:
    explicit Desk(HookedStore::Hook hook = [](const Batch &) {}) : m_hook(std::move(hook))
    {
        open();
    }

    void open()
    {
        writer.reset();
        MarketWriter::Events events;
        events.accountsChanged = [this](const std::vector<AccountId> &accounts) {
            std::vector<std::int64_t> ids;
            for (const AccountId account : accounts)
                ids.push_back(account.value());
            std::sort(ids.begin(), ids.end());
            std::string line = "changed";
            for (const std::int64_t id : ids)
                line += " " + std::to_string(id);
            log.push_back(line);
        };
        writer = std::make_unique<MarketWriter>(
            std::make_unique<HookedStore>(std::make_unique<SqliteStore>(m_folder / "m.market"),
                                          m_hook),
            test::smallMarket(), std::make_shared<ManualClock>(kMorning), std::move(events));
        writer->start();
    }

    /// Waits for the answers of a batch; the writer may take it in parts.
    std::vector<std::string> told(const std::vector<Command> &commands)
    {
        log.clear();
        writer->execute(commands);
        return std::exchange(log, {});
    }

    /// Touched by the writer's thread, read when everything was answered.
    std::vector<std::string> log;

private:
    TempFolder m_folder;
    HookedStore::Hook m_hook;

public:
    std::unique_ptr<MarketWriter> writer;
};

using Lines = std::vector<std::string>;

PlaceOrder order(std::int64_t account, Side side, std::int64_t price)
{
    PlaceOrder place;
    place.account = AccountId(account);
    place.collection = CollectionId(1100);
    place.side = side;
    place.price = Fen(price);
    place.quantity = Quantity(1);
    return place;
}

TEST(ChangedAccounts, NamesWhomACommitTouchedAndNobodyElse)
{
    Desk desk;
    for (const std::int64_t id : {1, 2, 3})
        EXPECT_EQ(desk.told({OpenAccount{AccountId(id), kDefaultFee, {}}}),
                  Lines{"changed " + std::to_string(id)});
    EXPECT_EQ(desk.told({Deposit{AccountId(1), Fen(10'000), {}}}), Lines{"changed 1"});
    EXPECT_EQ(desk.told({GrantHolding{AccountId(2), CollectionId(1100), Quantity(5), Fen(9), {}}}),
              Lines{"changed 2"});
    EXPECT_EQ(desk.told({order(2, Side::Sell, 1000)}), Lines{"changed 2"});
    EXPECT_EQ(desk.told({order(1, Side::Buy, 1000)}), Lines{"changed 1 2"}) << "a deal has two";
    EXPECT_EQ(desk.told({order(3, Side::Buy, 1000)}), Lines{}) << "refused, for want of money";
    EXPECT_EQ(desk.told({order(2, Side::Sell, 1000)}), Lines{"changed 2"});
    EXPECT_EQ(desk.told({RevokeOrders{AccountId(2), {OrderNumber(3)}, {}}}), Lines{"changed 2"});
    EXPECT_EQ(desk.told({order(2, Side::Sell, 1000)}), Lines{"changed 2"});
    EXPECT_EQ(desk.told({SettleDay{TradingDay(20'200'101)}}), Lines{"changed 2"})
        << "its order ended with the day";
    EXPECT_EQ(desk.told({SuspendCollection{CollectionId(1100), true}}), Lines{});
}

TEST(ChangedAccounts, AreToldOncePerCommitAndBeforeItsAnswers)
{
    Gate gate;
    std::atomic<bool> hold{false};
    Desk desk([&](const Batch &) {
        if (hold)
            gate.pass();
    });
    desk.told({OpenAccount{AccountId(1), kDefaultFee, {}}});
    desk.told({OpenAccount{AccountId(2), kDefaultFee, {}}});
    desk.log.clear();
    hold = true;
    Counter answers;
    const auto deposit = [&](std::int64_t id) {
        ASSERT_TRUE(desk.writer->submit(Deposit{AccountId(id), Fen(5), {}}, [&](const Result &) {
            desk.log.push_back("answered");
            answers.add();
        }));
    };
    deposit(1);
    ASSERT_TRUE(gate.awaitVisitor());
    for (const std::int64_t id : {2, 1, 2})
        deposit(id); // the next commit, all three
    gate.open();
    ASSERT_TRUE(answers.reaches(4));
    desk.writer->stop();
    EXPECT_EQ(desk.log,
              (Lines{"changed 1", "answered", "changed 1 2", "answered", "answered", "answered"}));
}

TEST(ChangedAccounts, NobodyIsNamedForWhatARecoveryFound)
{
    Desk desk;
    desk.told({OpenAccount{AccountId(1), kDefaultFee, {}}, Deposit{AccountId(1), Fen(5), {}},
               OpenAccount{AccountId(2), kDefaultFee, {}}});
    desk.open();
    EXPECT_EQ(desk.told({Deposit{AccountId(2), Fen(5), {}}}), Lines{"changed 2"});
}

TEST(ChangedAccounts, AFailedCommitTellsNothing)
{
    std::atomic<bool> broken{false};
    Desk desk([&](const Batch &) {
        if (broken)
            throw StoreError("planted");
    });
    desk.told({OpenAccount{AccountId(1), kDefaultFee, {}}});
    EXPECT_FALSE(desk.writer->hasEnded());
    broken = true;
    EXPECT_THROW(desk.told({Deposit{AccountId(1), Fen(5), {}}}), StoreError);
    EXPECT_EQ(desk.log, Lines{});
    EXPECT_TRUE(desk.writer->hasEnded());
}

} // namespace
} // namespace zvx
