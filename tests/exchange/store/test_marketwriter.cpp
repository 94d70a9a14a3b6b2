#include "exchange/store/marketwriter.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

namespace zvx {
namespace {

using test::Counter;
using test::Gate;
using test::HookedStore;
using test::kMorning;
using test::TempFolder;

/// A writer on a fresh file, on a clock that stands still.
class Desk
{
public:
    explicit Desk(HookedStore::Hook hook = {}, const WriterOptions &options = {})
        : m_clock(std::make_shared<ManualClock>(kMorning))
    {
        open(std::move(hook), options);
    }

    void open(HookedStore::Hook hook = {}, const WriterOptions &options = {})
    {
        std::unique_ptr<Store> store = std::make_unique<SqliteStore>(file());
        if (hook)
            store = std::make_unique<HookedStore>(std::move(store), std::move(hook));
        MarketWriter::Events events;
        events.published = [this](const auto &, const TopicSet &) { publications.add(); };
        events.fatal = [this](const std::string &text) {
            reason = text;
            fatals.add();
        };
        writer = std::make_unique<MarketWriter>(std::move(store), test::smallMarket(), m_clock,
                                                std::move(events), options);
    }

    std::filesystem::path file() const { return m_folder / "m.market"; }
    ManualClock &clock() { return *m_clock; }

    static Command account(std::int64_t id) { return OpenAccount{AccountId(id), kDefaultFee, {}}; }

private:
    TempFolder m_folder;
    std::shared_ptr<ManualClock> m_clock;

public:
    Counter publications;
    Counter fatals;
    std::string reason;
    std::unique_ptr<MarketWriter> writer; // ends before what its callbacks use
};

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

TEST(MarketWriter, AnswersOnlyWhatIsDurable)
{
    Gate gate;
    bool hold = false;
    std::vector<std::size_t> sizes;
    Desk desk([&](const Batch &batch) {
        sizes.push_back(batch.commands.size());
        if (hold)
            gate.pass();
    });
    sizes.clear();
    hold = true;
    desk.writer->start();
    Counter answers;
    const auto answered = [&](const Result &result) {
        EXPECT_EQ(result.status, Status::Accepted);
        answers.add();
    };
    ASSERT_TRUE(desk.writer->submit(Desk::account(1), answered));
    ASSERT_TRUE(gate.awaitVisitor());
    for (std::int64_t id = 2; id <= 101; ++id)
        ASSERT_TRUE(desk.writer->submit(Desk::account(id), answered));
    // The first commit is under way: nobody has an answer, and the file has nothing.
    EXPECT_EQ(answers.value(), 0);
    EXPECT_EQ(desk.writer->waiting(), 100u);
    {
        SqliteStore reader(desk.file());
        EXPECT_FALSE(recoverMarket(reader).market.account(AccountId(1)));
    }
    gate.open();
    ASSERT_TRUE(answers.reaches(101));
    {
        SqliteStore reader(desk.file());
        EXPECT_TRUE(recoverMarket(reader).market.account(AccountId(101)));
    }
    // What waited during the first commit became the second, all of it.
    EXPECT_EQ(sizes, (std::vector<std::size_t>{1, 100}));
    desk.writer->stop();
}

TEST(MarketWriter, ABatchHasABound)
{
    Gate gate;
    std::vector<std::size_t> sizes;
    bool hold = false;
    WriterOptions options;
    options.batchBound = 30;
    Desk desk(
        [&](const Batch &batch) {
            sizes.push_back(batch.commands.size());
            if (hold)
                gate.pass();
        },
        options);
    sizes.clear();
    hold = true;
    Counter answers;
    for (std::int64_t id = 1; id <= 70; ++id)
        ASSERT_TRUE(desk.writer->submit(Desk::account(id), [&](const Result &) { answers.add(); }));
    gate.open();
    desk.writer->start();
    ASSERT_TRUE(answers.reaches(70));
    EXPECT_EQ(sizes, (std::vector<std::size_t>{30, 30, 10}));
    desk.writer->stop();
}

TEST(MarketWriter, AFullQueueTurnsCommandsAway)
{
    WriterOptions options;
    options.queueBound = 3;
    Desk desk({}, options);
    Counter answers;
    Counter lost;
    const auto answered = [&](const Result &) { answers.add(); };
    for (std::int64_t id = 1; id <= 3; ++id)
        EXPECT_TRUE(desk.writer->submit(Desk::account(id), answered, [&] { lost.add(); }));
    EXPECT_FALSE(desk.writer->submit(Desk::account(4), answered, [&] { lost.add(); }));
    EXPECT_EQ(desk.writer->counters().refusedFull, 1u);
    desk.writer->start();
    ASSERT_TRUE(answers.reaches(3));
    EXPECT_EQ(desk.writer->execute({Desk::account(4)})[0].status, Status::Accepted);
    // More at once than the queue holds are handed in piece by piece, and answered in order.
    std::vector<Command> many;
    for (std::int64_t id = 4; id <= 40; ++id)
        many.push_back(Desk::account(id));
    const std::vector<Result> results = desk.writer->execute(many);
    ASSERT_EQ(results.size(), 37u);
    EXPECT_EQ(results[0].status, Status::AlreadyThere);
    EXPECT_EQ(results[36].status, Status::Accepted);
    EXPECT_EQ(lost.value(), 0);
    EXPECT_EQ(answers.value(), 3);
}

TEST(MarketWriter, AFailedCommitEndsItAndIsNeverRetried)
{
    Gate gate;
    int commits = 0;
    bool broken = false;
    Desk desk([&](const Batch &) {
        if (!broken)
            return;
        ++commits;
        gate.pass();
        throw StoreError("m.market: disk I/O error");
    });
    broken = true;
    const auto before = desk.writer->snapshot();
    desk.writer->start();
    Counter answers;
    Counter lost;
    const auto hand = [&](std::int64_t id) {
        return desk.writer->submit(
            Desk::account(id), [&](const Result &) { answers.add(); }, [&] { lost.add(); });
    };
    ASSERT_TRUE(hand(1));
    ASSERT_TRUE(gate.awaitVisitor());
    ASSERT_TRUE(hand(2));
    gate.open();
    ASSERT_TRUE(desk.fatals.reaches(1));
    EXPECT_NE(desk.reason.find("disk I/O error"), std::string::npos);
    EXPECT_EQ(lost.value(), 2);
    EXPECT_TRUE(desk.writer->failed());
    EXPECT_FALSE(hand(3));
    EXPECT_THROW(desk.writer->execute({Desk::account(4)}), StoreError);
    desk.writer->stop();
    EXPECT_EQ(commits, 1); // no checkpoint at the end either
    EXPECT_EQ(answers.value(), 0);
    EXPECT_EQ(lost.value(), 2);
    EXPECT_EQ(desk.fatals.value(), 1);
    EXPECT_EQ(desk.writer->snapshot(), before); // nothing was published of it

    desk.open();
    EXPECT_FALSE(desk.writer->failed());
    desk.writer->start();
    EXPECT_EQ(desk.writer->execute({Desk::account(1)})[0].status, Status::Accepted);
}

TEST(MarketWriter, ACleanStopDrainsAndLeavesACheckpoint)
{
    Desk desk;
    Counter answers;
    for (std::int64_t id = 1; id <= 500; ++id)
        ASSERT_TRUE(desk.writer->submit(Desk::account(id), [&](const Result &) { answers.add(); }));
    desk.writer->start();
    desk.writer->stop();
    EXPECT_EQ(answers.value(), 500);
    EXPECT_FALSE(desk.writer->submit(Desk::account(501), [&](const Result &) { answers.add(); }));
    desk.writer->stop();
    SqliteStore store(desk.file());
    const Recovered recovered = recoverMarket(store);
    EXPECT_EQ(recovered.checkpoint, recovered.lastCommand);
    EXPECT_EQ(recovered.market.accounts().size(), 500u);
}

TEST(MarketWriter, AStopBeforeTheStartLosesNobody)
{
    Desk desk;
    Counter lost;
    ASSERT_TRUE(desk.writer->submit(
        Desk::account(1), [](const Result &) { FAIL(); }, [&] { lost.add(); }));
    desk.writer->stop();
    EXPECT_EQ(lost.value(), 1);
}

TEST(MarketWriter, NothingStartsAfterAStop)
{
    Desk desk;
    desk.writer->stop();
    desk.writer->start();
    EXPECT_FALSE(desk.writer->submit(Desk::account(1), [](const Result &) { FAIL(); }));
    desk.writer->stop();
    EXPECT_FALSE(desk.writer->failed());
}

TEST(MarketWriter, APublicationThatFailsEndsIt)
{
    const TempFolder folder;
    Counter fatals;
    Counter lost;
    Counter answers;
    MarketWriter::Events events;
    events.published = [](const auto &, const TopicSet &) { throw std::runtime_error("no room"); };
    events.fatal = [&](const std::string &reason) {
        EXPECT_EQ(reason, "no room");
        fatals.add();
    };
    MarketWriter writer(std::make_unique<SqliteStore>(folder / "m.market"), test::smallMarket(),
                        std::make_shared<ManualClock>(kMorning), std::move(events));
    writer.start();
    ASSERT_TRUE(writer.submit(
        SuspendCollection{CollectionId(1100), true}, [&](const Result &) { answers.add(); },
        [&] { lost.add(); }));
    ASSERT_TRUE(fatals.reaches(1));
    writer.stop();
    EXPECT_EQ(lost.value(), 1);
    EXPECT_EQ(answers.value(), 0);
    SqliteStore store(folder / "m.market");
    EXPECT_TRUE(recoverMarket(store).market.collection(CollectionId(1100))->suspended);
}

TEST(MarketWriter, ABatchTakesOneCommandAtLeast)
{
    WriterOptions options;
    options.batchBound = 0;
    Desk desk({}, options);
    desk.writer->start();
    EXPECT_EQ(desk.writer->execute({Desk::account(1)})[0].status, Status::Accepted);
}

TEST(MarketWriter, ABurntKeyIsDurable)
{
    const ActionKey key{7, 9};
    Desk desk;
    desk.writer->start();
    desk.writer->execute({Desk::account(1), BurnKey{AccountId(1), key}});
    desk.writer->stop();
    desk.open();
    desk.writer->start();
    EXPECT_EQ(desk.writer->execute({Deposit{AccountId(1), Fen(1), key}})[0].status,
              Status::KeyBurnt);
}

TEST(MarketWriter, CheckpointsComeEveryNCommandsAndAtSettlement)
{
    WriterOptions options;
    options.checkpointEvery = 100;
    options.batchBound = 10;
    Desk desk({}, options);
    desk.writer->start();
    std::vector<Command> commands;
    for (std::int64_t id = 1; id <= 250; ++id)
        commands.push_back(Desk::account(id));
    desk.writer->execute(commands);
    const std::uint64_t before = desk.writer->counters().checkpoints;
    EXPECT_GE(before, 2u);
    EXPECT_LE(before, 3u);
    desk.writer->execute({SettleDay{TradingDay(20'200'101)}});
    EXPECT_EQ(desk.writer->counters().checkpoints, before + 1);
}

TEST(MarketWriter, ARefusalIsAnsweredWithoutACommit)
{
    Desk desk;
    desk.writer->start();
    const std::uint64_t commits = desk.writer->counters().commits;
    EXPECT_EQ(desk.writer->execute({order(77, Side::Buy, 1'000)})[0].status,
              Status::AccountUnknown);
    EXPECT_EQ(desk.writer->counters().commits, commits);
}

TEST(MarketWriter, PublishesAtItsCadenceWithoutFurtherCommands)
{
    Desk desk;
    desk.writer->start();
    desk.writer->execute({Desk::account(1), Deposit{AccountId(1), Fen(100'000'000), {}}});
    desk.writer->execute({order(1, Side::Buy, 950)});
    const auto first = desk.writer->snapshot(); // published before it was answered
    EXPECT_EQ(first->list->version, 2u);
    EXPECT_EQ(first->collections[0]->trade.version, 2u);
    const int publications = desk.publications.value();

    desk.writer->execute({order(1, Side::Buy, 951)});
    desk.writer->execute({order(1, Side::Buy, 952)});
    EXPECT_EQ(desk.writer->snapshot(), first);
    desk.clock().advance(199);
    desk.writer->execute({order(1, Side::Buy, 953)}); // passes through the whole loop
    EXPECT_EQ(desk.writer->snapshot(), first);

    desk.clock().advance(1);
    ASSERT_TRUE(desk.publications.reaches(publications + 1));
    const auto second = desk.writer->snapshot();
    EXPECT_EQ(second->collections[0]->trade.version, 3u);
    EXPECT_EQ(second->collections[0]->trade.data->buys[0].price, Fen(953));
    EXPECT_EQ(second->list, first->list);

    desk.clock().advance(1'000);
    ASSERT_TRUE(desk.publications.reaches(publications + 2));
    const auto third = desk.writer->snapshot();
    EXPECT_EQ(third->list->version, 3u);
    EXPECT_EQ(third->list->rows[0]->bid, Fen(953));
    EXPECT_EQ(third->collections[0], second->collections[0]);
}

TEST(MarketWriter, StartsAgainWithTheDealsOfTheSession)
{
    Desk desk;
    desk.writer->start();
    std::vector<Command> commands;
    for (const std::int64_t id : {1, 2}) {
        commands.push_back(Desk::account(id));
        commands.push_back(Deposit{AccountId(id), Fen(100'000'000), {}});
        commands.push_back(
            GrantHolding{AccountId(id), CollectionId(1100), Quantity(100), Fen(1'000), {}});
    }
    for (int i = 0; i < 5; ++i) {
        commands.push_back(order(1, Side::Sell, 1'000 + i));
        commands.push_back(order(2, Side::Buy, 1'000 + i));
    }
    for (const Result &result : desk.writer->execute(commands))
        ASSERT_EQ(result.status, Status::Accepted);
    desk.writer->stop();
    desk.open();
    const auto snapshot = desk.writer->snapshot();
    const CollectionSnapshot &collection = *snapshot->collections[0];
    ASSERT_EQ(collection.latest.data->size(), 5u);
    EXPECT_EQ(collection.latest.data->front().sequence, Sequence(1));
    EXPECT_EQ(collection.latest.data->back().price, Fen(1'004));
    EXPECT_EQ(collection.latest.version, 1u);
    EXPECT_EQ(snapshot->list->rows[0]->latest, Fen(1'004));
    EXPECT_EQ(snapshot->list->version, 1u);
    EXPECT_EQ(snapshot->composite.data->quote.open.has_value(), true);
    EXPECT_EQ(snapshot->composite.data->quote.volume, Quantity(5));
}

} // namespace
} // namespace zvx
