#pragma once

#include "exchange/service/http_message.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace zvx {

class MarketReader;
class MarketServer;
class ServiceLog;
class WireAnswers;

/// Counters since the start. Read from any thread.
struct QueryCounters {
    std::atomic<std::uint64_t> answered{0}; ///< read, or failed to
    std::atomic<std::uint64_t> turnedAway{0};
};

/**
 * The road back for everything that is read from the markets' stores: a few threads for all
 * markets, and a bounded queue in front of them, so that a flood of questions costs those who ask
 * and nobody who trades.
 */
class QueryPool
{
public:
    struct Options {
        std::size_t threads = 2;
        std::size_t bound = 1024; ///< questions that may wait; one more is told to come back
    };

    /// Reads one market's store and makes the answer of it. On one of the pool's threads.
    using Question = std::function<HttpAnswer(MarketReader &)>;

    /// `answers` and `log` have to outlive this.
    QueryPool(const WireAnswers &answers, ServiceLog &log, const Options &options);
    QueryPool(const WireAnswers &answers, ServiceLog &log);
    ~QueryPool();
    QueryPool(const QueryPool &) = delete;
    QueryPool &operator=(const QueryPool &) = delete;

    /// Answers the request with what `question` makes of the market's store, and the reader sees
    /// everything that was acknowledged before this call. From any thread, exactly once: `busy`
    /// when the queue is full, `failed` when the pool has ended or the store cannot be read.
    void answer(MarketServer &market, HttpResponder responder, Question question);

    const QueryCounters &counters() const { return m_counters; }
    /// Questions that wait.
    std::size_t waiting() const;

    /// Answers what waits and ends the threads. Markets must stand until then. Harmless when called
    /// again.
    void stop();

private:
    struct Waiting {
        MarketServer *market;
        HttpResponder responder;
        Question question;
    };

    void run();
    HttpAnswer ask(MarketServer &market, const Question &question);

    const WireAnswers &m_answers;
    ServiceLog &m_log;
    std::size_t m_bound;
    QueryCounters m_counters;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Waiting> m_queue;
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};

} // namespace zvx
