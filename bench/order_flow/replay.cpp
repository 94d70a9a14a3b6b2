#include "replay.h"

#include "orderstream.h"

#include "exchange/core/eventcodec.h"
#include "exchange/store/marketwriter.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "support/report.h"
#include "support/scratchfolder.h"
#include "support/stopwatch.h"

#include <algorithm>

using namespace zvx;

namespace {

constexpr std::size_t kBooks = 500;
constexpr std::size_t kAccounts = 2000;
constexpr std::size_t kChunk = 4000; // commands that wait for their answers at a time

void write(const std::filesystem::path &file, const Floor &floor,
           const std::vector<Command> &commands)
{
    MarketWriter writer(std::make_unique<SqliteStore>(file), floor.catalogue(),
                        std::make_shared<SystemClock>(), {});
    writer.start();
    for (const auto &part : {floor.opening(), commands}) {
        for (std::size_t begin = 0; begin < part.size(); begin += kChunk) {
            const std::size_t end = std::min(begin + kChunk, part.size());
            writer.execute({part.begin() + static_cast<std::ptrdiff_t>(begin),
                            part.begin() + static_cast<std::ptrdiff_t>(end)});
        }
    }
    writer.stop();
}

std::size_t countEvents(Store &store)
{
    std::size_t count = 0;
    store.readCommands(1, store.lastCommand(), [&count](const StoredCommand &command) {
        std::string_view bytes = command.events;
        Event event;
        while (!bytes.empty() && decode(bytes, event))
            ++count;
    });
    return count;
}

} // namespace

void measureReplay(const Options &options, Report &report, Failures &failures)
{
    constexpr double wanted = 200'000;
    const ScratchFolder folder(options.folder);
    const auto file = folder.path() / "replayed.market";
    const Floor floor(kBooks, kAccounts, options.seed);
    OrderStream stream(floor, options.seed);
    write(file, floor, stream.make(options.quick ? 10'000 : 200'000));

    SqliteStore store(file);
    const std::int64_t last = store.lastCommand();
    const StoredCheckpoint written = store.checkpoint(store.checkpoints().front());
    if (written.number != last)
        failures.push_back("the writer ended without a checkpoint of its last command");
    const auto events = static_cast<double>(countEvents(store));
    std::vector<double> rates;
    for (int round = 0; round < options.rounds; ++round) {
        const Stopwatch watch;
        const Market market = replayMarket(store);
        rates.push_back(events / watch.wall() * 1000);
        if (market.stateHash() != written.hash)
            failures.push_back("replay gave another state than the writer had");
    }
    const double rate = median(rates);
    report.words("replay of " + fixedText(events, 0) + " events of " + std::to_string(last)
                     + " commands, from disk to the same state hash",
                 fixedText(rate, 0) + " a second", fixedText(wanted, 0) + " a second",
                 fixedText(rate / wanted, 2), "1", rate >= wanted);
}
