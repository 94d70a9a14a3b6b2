#pragma once

#include "campaign/campaign.h"
#include "exchange/kills/intents.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace zvxtest {

/// One trader at work over HTTP, on connections of its own.
class TradingClient
{
public:
    TradingClient(const Trader &trader, std::uint64_t seed);

    /// Sends actions, a few at a time, until `stop` is set or the connection ends; from then on
    /// some answers are left unread. Calls `told` after each final answer.
    void trade(std::uint16_t port, const std::atomic<bool> &stop,
               const std::function<void()> &told);

    /// Asks what became of the intents since the last call, or of all of them: what was said before
    /// must be said again, and what was not done must stay so.
    void ask(std::uint16_t port, bool all, campaign::Counts &counts);

    const Trader &trader() const { return m_trader; }
    const std::vector<Intent> &intents() const { return m_intents; }
    /// What was not as promised, the first of it.
    const campaign::Failure &failure() const { return m_failure; }

private:
    void take(Intent &intent, const Word &word);
    void learn(Intent &intent, const Word &word, campaign::Counts &counts);
    void repeat(std::uint16_t port, const Intent &intent, campaign::Counts &counts);
    Word finalWord(std::uint16_t port, const Intent &intent, const std::string &form);
    void fail(const Intent &intent, const std::string &what);

    Trader m_trader;
    Wishes m_wishes;
    std::vector<Intent> m_intents;
    std::size_t m_asked = 0; ///< of them by ask()
    campaign::Failure m_failure;
};

/// Several of them at once, against one run of the service.
class OrderLoad
{
public:
    OrderLoad(std::vector<TradingClient> &clients, std::uint16_t port);
    ~OrderLoad();
    OrderLoad(const OrderLoad &) = delete;

    /// Waits for so many final answers. False where they do not come.
    bool awaitAnswers(unsigned count);
    void stop() { m_stop = true; }
    /// Waits until all have ended.
    void join();

private:
    std::atomic<bool> m_stop{false};
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_answers = 0;
    std::vector<std::thread> m_threads;
};

} // namespace zvxtest
