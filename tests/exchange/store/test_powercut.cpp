#include "exchange/store/marketwriter.h"
#include "exchange/store/powercutdisk.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace zvx {
namespace {

using test::PowerCutDisk;
using test::RandomTrading;

struct Answered {
    AccountId account;
    ActionKey key;
    Status meaning;
};

struct KeyOf {
    template <typename Any>
    Answered operator()(const Any &) const
    {
        return {};
    }
    Answered operator()(const Deposit &c) const { return {c.account, c.key, {}}; }
    Answered operator()(const Withdraw &c) const { return {c.account, c.key, {}}; }
    Answered operator()(const PlaceOrder &c) const { return {c.account, c.key, {}}; }
    Answered operator()(const BeginTransfer &c) const { return {c.account, c.key, {}}; }
    Answered operator()(const RevokeOrders &c) const { return {c.account, c.key, {}}; }
};

struct Tally {
    int cuts = 0;
    int cutsInRecovery = 0;
    int lost = 0; ///< answered actions that were gone, or told otherwise
    int damaged = 0; ///< files that could not be opened any more
    std::uint64_t answered = 0;
};

constexpr int kCutsOfAMarket = 20;

/// Trades on a disk whose power fails at random, opens it again, and looks for what was answered.
Tally tradeThroughCuts(PowerCutDisk &disk, std::uint32_t seed, int cuts)
{
    const CatalogueMarket catalogue = test::smallMarket();
    WriterOptions options;
    options.checkpointEvery = 60;
    options.batchBound = 8;
    std::mt19937 random(seed);
    RandomTrading trading(seed, catalogue);
    std::vector<Answered> answered;
    bool furnished = false;
    Tally tally;
    while (tally.cuts < cuts) {
        // A fresh market now and then, so that its making is cut as well and the check stays quick.
        const bool fresh = tally.cuts % kCutsOfAMarket == 0;
        if (fresh) {
            disk.erase();
            answered.clear();
            furnished = false;
        }
        // Some cuts hit the opening itself: recovery, migration, moving the log.
        disk.cutAfter(random() % 20 == 0 ? random() % 12 : 12 + random() % 600);
        std::unique_ptr<MarketWriter> writer;
        try {
            writer = std::make_unique<MarketWriter>(
                std::make_unique<SqliteStore>("m.market", disk.name(), 30), catalogue,
                std::make_shared<ManualClock>(test::kMorning), MarketWriter::Events(), options);
        } catch (const std::exception &) {
            if (!disk.isOff()) {
                ++tally.damaged;
                return tally;
            }
            ++tally.cutsInRecovery;
        }
        if (writer) {
            std::vector<Answered> noted; // touched by the writer's thread until it ended
            const auto hand = [&](const Command &command) {
                Answered entry = std::visit(KeyOf(), command);
                const auto note = [&noted, entry](const Result &result) mutable {
                    entry.meaning = result.meaning();
                    noted.push_back(entry);
                };
                while (!writer->submit(command, note) && !writer->failed())
                    std::this_thread::yield();
            };
            writer->start();
            // Without accounts nothing would ever be written, and no cut would come.
            if (!furnished || random() % 8 == 0)
                for (const Command &command : trading.opening())
                    hand(command);
            while (!writer->failed()) {
                const Command command = trading.next();
                // A settlement forgets old keys, which would blind the check.
                if (!std::holds_alternative<SettleDay>(command))
                    hand(command);
            }
            writer->stop();
            tally.answered += noted.size();
            answered.insert(answered.end(), noted.begin(), noted.end());
        }
        disk.powerOn();
        ++tally.cuts;
        try {
            SqliteStore store("m.market", disk.name());
            const Recovered recovered = recoverMarket(store);
            furnished = recovered.market.accounts().size() == RandomTrading::kAccounts;
            for (const Answered &entry : answered) {
                if (entry.key.isNull())
                    continue;
                const auto found = recovered.market.answerOf(entry.account, entry.key);
                if (!found || found->meaning() != entry.meaning)
                    ++tally.lost;
            }
            if (replayMarket(store).stateHash() != recovered.market.stateHash())
                ++tally.damaged;
        } catch (const std::exception &) {
            ++tally.damaged;
            return tally;
        }
    }
    return tally;
}

/// The environment variables ZVX_CUTS and ZVX_SEED make it longer and another one.
TEST(PowerCut, WhatWasAnsweredIsThere)
{
    const char *cuts = std::getenv("ZVX_CUTS");
    const char *seed = std::getenv("ZVX_SEED");
    const int wanted = cuts ? std::atoi(cuts) : 2'000;
    const auto start = static_cast<std::uint32_t>(seed ? std::atoi(seed) : 1);
    PowerCutDisk disk(start);
    const Tally tally = tradeThroughCuts(disk, start, wanted);
    RecordProperty("seed", static_cast<int>(start));
    std::printf("seed %u: %d cuts, %d of them while opening, %llu answered actions, %llu sectors "
                "lost; repeat with ZVX_SEED=%u ZVX_CUTS=%d\n",
                start, tally.cuts, tally.cutsInRecovery,
                static_cast<unsigned long long>(tally.answered),
                static_cast<unsigned long long>(disk.lostSectors()), start, wanted);
    EXPECT_EQ(tally.cuts, wanted);
    EXPECT_GT(tally.cutsInRecovery, 0);
    EXPECT_GT(tally.answered, 1'000u);
    EXPECT_GT(disk.lostSectors(), 0u);
    EXPECT_EQ(tally.lost, 0);
    EXPECT_EQ(tally.damaged, 0);
}

/// The same check on disks that do not keep their word: it has to see that.
TEST(PowerCut, SeesADiskThatDoesNotSync)
{
    // The log alone is what a store without full synchronisation amounts to; "" is every file.
    for (const char *ending : {"-wal", ""}) {
        SCOPED_TRACE(ending);
        PowerCutDisk disk(3);
        disk.lieAboutSyncs(ending);
        const Tally tally = tradeThroughCuts(disk, 3, 20);
        EXPECT_GT(tally.lost + tally.damaged, 0);
    }
}

} // namespace
} // namespace zvx
