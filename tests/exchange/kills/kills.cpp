#include "exchange/kills/kills.h"

#include "exchange/kills/funded_folder.h"
#include "exchange/kills/names.h"
#include "exchange/kills/order_load.h"
#include "exchange/kills/truth.h"
#include "exchange/service/program.h"
#include "exchange/service/raw_client.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/service/until.h"
#include "exchange/store/statelock.h"

#include <csignal>
#include <iterator>
#include <random>

namespace zvxtest {

using namespace std::chrono_literals;

namespace {

constexpr int kTraders = 3;

/// Made once, and copied for each life.
struct FirstFolder {
    TemporaryFolder folder;
    std::vector<Trader> traders = FundedFolder::make(folder.path() / "state", kTraders);
};

class Life
{
public:
    Life(std::uint64_t seed, campaign::Counts &counts)
        : m_random(static_cast<std::uint32_t>(seed)), m_counts(counts)
    {
        static const FirstFolder first;
        std::filesystem::copy(first.folder.path(), m_folder.path(),
                              std::filesystem::copy_options::recursive);
        for (const Trader &trader : first.traders)
            m_clients.emplace_back(trader, seed);
    }

    campaign::Failure live()
    {
        for (int kill = 0; kill < kKillsOfALife; ++kill) {
            Program service(serving(), Program::Nothing);
            const std::uint16_t port = service.port();
            if (auto failure = ask(port, false))
                return failure;
            if (auto failure = killUnderLoad(service, port))
                return failure;
            if (kill == 0)
                killWhileOpening();
        }
        Program service(serving(), Program::Nothing);
        if (auto failure = ask(service.port(), true))
            return failure;
        if (auto failure = endCleanly(service))
            return failure;
        return compareWithStore(state(), m_clients, m_counts);
    }

private:
    std::filesystem::path state() const { return m_folder.path() / "state"; }

    std::vector<std::string> serving()
    {
        return {"serve",
                "--state",
                state().string(),
                "--robots",
                "0",
                "--bank-delay",
                std::to_string(m_random() % 20),
                "--prepare-delay",
                delay(),
                "--ship-delay",
                delay()};
    }

    /// Of the carrier, in seconds: some goods wait, and others are on their way when the end comes.
    std::string delay()
    {
        static constexpr const char *delays[] = {"0", "0.05", "600", "600"};
        return delays[m_random() % std::size(delays)];
    }

    campaign::Failure ask(std::uint16_t port, bool all)
    {
        for (TradingClient &client : m_clients) {
            client.ask(port, all, m_counts);
            if (client.failure())
                return client.failure();
        }
        return std::nullopt;
    }

    campaign::Failure killUnderLoad(Program &service, std::uint16_t port)
    {
        OrderLoad load(m_clients, port);
        const bool came = load.awaitAnswers(10 + m_random() % 60);
        if (m_random() % 2 == 0) {
            // Clients that left may have been served since: some of what they sent is done.
            load.stop();
            load.join();
            if (m_random() % 2 == 0)
                fetch(port, "/healthz");
            ++m_counts[kKillUnread];
        }
        const bool lived = service.isRunning();
        service.signal(SIGKILL);
        service.wait();
        load.join();
        ++m_counts[kKill];
        if (!lived)
            return "the service ended by itself: " + service.errors;
        if (!came)
            return "the service stopped answering: " + service.errors;
        return std::nullopt;
    }

    /// The folder's lock is taken first of all, and the port is told when all is open. A start that
    /// was too quick for us is tried again.
    void killWhileOpening()
    {
        for (int i = 0; i < 5; ++i) {
            Program service(serving(), Program::Nothing);
            until([&] { return zvx::StateLock::holder(state()) || !service.isRunning(); }, 60s);
            service.signal(SIGKILL);
            service.wait();
            if (service.output.empty()) {
                ++m_counts[kKillOpening];
                return;
            }
        }
    }

    campaign::Failure endCleanly(Program &service)
    {
        service.signal(SIGTERM);
        const int code = service.wait();
        if (code != 0)
            return "the clean end gave " + std::to_string(code) + ": " + service.errors;
        return std::nullopt;
    }

    TemporaryFolder m_folder;
    std::mt19937 m_random;
    campaign::Counts &m_counts;
    std::vector<TradingClient> m_clients;
};

} // namespace

campaign::Counts killCounts()
{
    campaign::Counts counts;
    for (const char *what :
         {kKill, kKillUnread, kKillOpening, kOrderThere, kRevokeThere, kTransferThere, kTakeThere,
          kTakeBackThere, kRefusalThere, kUnheardDone, kUnheardNotDone, kSentAgain, kDeal,
          kParcelWaiting, kParcelSent, kParcelCancelled})
        counts[what] = 0;
    return counts;
}

campaign::Failure killAgainAndAgain(std::uint64_t seed, campaign::Counts &counts)
{
    return Life(seed, counts).live();
}

} // namespace zvxtest
