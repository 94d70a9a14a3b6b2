#include "exchange/store/marketwriter.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace zvx {
namespace {

using test::RandomTrading;
using test::TempFolder;

/// What the writer's process reports of each answered command.
struct Acknowledged {
    std::int64_t account;
    ActionKey key;
    std::uint8_t meaning;
};

struct KeyOf {
    template <typename Any>
    Acknowledged operator()(const Any &) const
    {
        return {};
    }
    Acknowledged operator()(const Deposit &c) const { return {c.account.value(), c.key, 0}; }
    Acknowledged operator()(const Withdraw &c) const { return {c.account.value(), c.key, 0}; }
    Acknowledged operator()(const PlaceOrder &c) const { return {c.account.value(), c.key, 0}; }
    Acknowledged operator()(const BeginTransfer &c) const { return {c.account.value(), c.key, 0}; }
    Acknowledged operator()(const RequestDelivery &c) const
    {
        return {c.account.value(), c.key, 0};
    }
    Acknowledged operator()(const CancelDelivery &c) const { return {c.account.value(), c.key, 0}; }
    Acknowledged operator()(const RevokeOrders &c) const { return {c.account.value(), c.key, 0}; }
};

/// The process that gets killed: trades as fast as it can and reports each answer.
[[noreturn]] void tradeForEver(const std::filesystem::path &file, std::uint32_t seed, int report)
{
    const CatalogueMarket catalogue = test::smallMarket();
    WriterOptions options;
    options.checkpointEvery = 40;
    options.batchBound = 16;
    MarketWriter writer(std::make_unique<SqliteStore>(file, "", 40), catalogue,
                        std::make_shared<SystemClock>(), {}, options);
    writer.start();
    RandomTrading trading(seed, catalogue);
    for (const Command &command : trading.opening())
        while (!writer.submit(command, {}))
            ::usleep(100);
    for (;;) {
        Command command = trading.next();
        if (std::holds_alternative<SettleDay>(command))
            continue; // forgets keys after two sessions, which would blind the check
        Acknowledged line = std::visit(KeyOf(), command);
        const auto answered = [line, report](const Result &result) mutable {
            line.meaning = static_cast<std::uint8_t>(result.meaning());
            if (::write(report, &line, sizeof line) != sizeof line)
                ::_exit(1);
        };
        while (!writer.submit(command, answered))
            ::usleep(100);
    }
}

/// The process dies while it works, at a place that nobody chose; what it answered must be there.
TEST(Kill, WhatWasAnsweredIsThereAfterEachOfTwentyKills)
{
    const TempFolder folder;
    const std::filesystem::path file = folder / "m.market";
    std::mt19937 random(20);
    std::vector<Acknowledged> all;
    std::int64_t last = 0;
    for (std::uint32_t round = 0; round < 20; ++round) {
        int report[2];
        ASSERT_EQ(::pipe(report), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(report[0]);
            tradeForEver(file, round, report[1]);
        }
        ::close(report[1]);
        const unsigned wanted = 1 + random() % 300;
        Acknowledged line{};
        unsigned seen = 0;
        // Killed after some answers; those that were on their way are read afterwards.
        while (::read(report[0], &line, sizeof line) == static_cast<ssize_t>(sizeof line)) {
            all.push_back(line);
            if (++seen == wanted)
                ::kill(child, SIGKILL);
        }
        ::close(report[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "round " << round;
        ASSERT_GE(seen, wanted);

        SqliteStore store(file);
        const Recovered recovered = recoverMarket(store);
        ASSERT_GT(recovered.lastCommand, last);
        last = recovered.lastCommand;
        ASSERT_TRUE(recovered.notices.empty());
        ASSERT_EQ(recovered.market.stateHash(), replayMarket(store).stateHash());
        for (const Acknowledged &entry : all) {
            if (entry.key.isNull())
                continue;
            const auto answer = recovered.market.answerOf(AccountId(entry.account), entry.key);
            ASSERT_TRUE(answer) << "round " << round << " lost an answered action";
            ASSERT_EQ(static_cast<std::uint8_t>(answer->meaning()), entry.meaning);
        }
        const std::string tables = store.describeTables();
        rebuildTables(store);
        ASSERT_EQ(store.describeTables(), tables);
    }
    EXPECT_GT(all.size(), 1'000u);
}

} // namespace
} // namespace zvx
