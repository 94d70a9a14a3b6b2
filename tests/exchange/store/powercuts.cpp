#include "exchange/store/powercuts.h"

#include "exchange/store/marketwriter.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <random>
#include <thread>

namespace zvx::test {

namespace {

const char *const kCut = "power cut";
const char *const kCutInOpening = "power cut while opening or recovering";
const char *const kCutInMaking = "power cut before the market was furnished";
const char *const kLostSector = "unsynced sector lost";
const char *const kAnswered = "action answered before a cut";
const char *const kAskedFor = "answer found again after a cut";
const char *const kReplayed = "market replayed from its events";

struct Answered {
    AccountId account;
    ActionKey key;
    Status meaning = Status::Accepted;
};

struct KeyOf {
    template <typename Any>
    Answered operator()(const Any &) const
    {
        return {};
    }
    Answered operator()(const Deposit &c) const { return {c.account, c.key}; }
    Answered operator()(const Withdraw &c) const { return {c.account, c.key}; }
    Answered operator()(const PlaceOrder &c) const { return {c.account, c.key}; }
    Answered operator()(const BeginTransfer &c) const { return {c.account, c.key}; }
    Answered operator()(const RequestDelivery &c) const { return {c.account, c.key}; }
    Answered operator()(const CancelDelivery &c) const { return {c.account, c.key}; }
    Answered operator()(const RevokeOrders &c) const { return {c.account, c.key}; }
};

class Life
{
public:
    Life(PowerCutDisk &disk, std::uint64_t seed, campaign::Counts &counts)
        : m_disk(disk), m_counts(counts), m_random(static_cast<std::uint32_t>(seed)),
          m_trading(static_cast<std::uint32_t>(seed), m_catalogue)
    {
        m_options.checkpointEvery = 60;
        m_options.batchBound = 8;
    }

    campaign::Failure live()
    {
        m_disk.erase();
        for (int cut = 0; cut < kCutsOfAMarket; ++cut) {
            // Some cuts hit the opening itself: recovery, migration, moving the log.
            m_disk.cutAfter(m_random() % 20 == 0 ? m_random() % 12 : 12 + m_random() % 600);
            if (const campaign::Failure failure = tradeUntilTheCut())
                return failure;
            const std::uint64_t lost = m_disk.lostSectors();
            m_disk.powerOn();
            ++m_counts[kCut];
            m_counts[kLostSector] += static_cast<std::int64_t>(m_disk.lostSectors() - lost);
            if (const campaign::Failure failure = lookForWhatWasAnswered())
                return failure;
        }
        return std::nullopt;
    }

private:
    campaign::Failure tradeUntilTheCut()
    {
        std::unique_ptr<MarketWriter> writer;
        try {
            writer = std::make_unique<MarketWriter>(
                std::make_unique<SqliteStore>(kFile, m_disk.name(), 30), m_catalogue,
                std::make_shared<ManualClock>(kMorning), MarketWriter::Events(), m_options);
        } catch (const std::exception &error) {
            if (!m_disk.isOff())
                return std::string("the market does not open: ") + error.what();
            ++m_counts[kCutInOpening];
            return std::nullopt;
        }
        if (!m_furnished)
            ++m_counts[kCutInMaking];
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
        if (!m_furnished || m_random() % 8 == 0)
            for (const Command &command : m_trading.opening())
                hand(command);
        while (!writer->failed()) {
            const Command command = m_trading.next();
            // A settlement forgets old keys, which would blind the check.
            if (!std::holds_alternative<SettleDay>(command))
                hand(command);
        }
        writer->stop();
        m_counts[kAnswered] += static_cast<std::int64_t>(noted.size());
        m_answered.insert(m_answered.end(), noted.begin(), noted.end());
        return std::nullopt;
    }

    campaign::Failure lookForWhatWasAnswered()
    {
        try {
            SqliteStore store(kFile, m_disk.name());
            const Recovered recovered = recoverMarket(store);
            m_furnished = recovered.market.accounts().size() == RandomTrading::kAccounts;
            for (const Answered &entry : m_answered) {
                if (entry.key.isNull())
                    continue;
                const auto found = recovered.market.answerOf(entry.account, entry.key);
                if (!found)
                    return "an action that was answered is gone, account "
                        + std::to_string(entry.account.value());
                if (found->meaning() != entry.meaning)
                    return std::string("an action was answered ") + name(entry.meaning)
                        + " and stands as " + name(found->meaning());
                ++m_counts[kAskedFor];
            }
            if (replayMarket(store).stateHash() != recovered.market.stateHash())
                return "the recovered market is not what its events say";
            ++m_counts[kReplayed];
        } catch (const std::exception &error) {
            return std::string("the market is damaged: ") + error.what();
        }
        return std::nullopt;
    }

    static constexpr const char *kFile = "m.market";

    PowerCutDisk &m_disk;
    campaign::Counts &m_counts;
    std::mt19937 m_random;
    const CatalogueMarket m_catalogue = smallMarket();
    RandomTrading m_trading;
    WriterOptions m_options;
    std::vector<Answered> m_answered;
    bool m_furnished = false;
};

} // namespace

campaign::Counts powerCutCounts()
{
    campaign::Counts counts;
    for (const char *what :
         {kCut, kCutInOpening, kCutInMaking, kLostSector, kAnswered, kAskedFor, kReplayed})
        counts[what] = 0;
    return counts;
}

campaign::Failure tradeThroughCuts(PowerCutDisk &disk, std::uint64_t seed, campaign::Counts &counts)
{
    return Life(disk, seed, counts).live();
}

} // namespace zvx::test
