#include "exchange/service/query_pool.h"

#include "exchange/service/service_log.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketreader.h"

namespace zvx {

QueryPool::QueryPool(const WireAnswers &answers, ServiceLog &log, const Options &options)
    : m_answers(answers), m_log(log), m_bound(options.bound)
{
    for (std::size_t i = 0; i < options.threads; ++i)
        m_threads.emplace_back([this] { run(); });
}

QueryPool::QueryPool(const WireAnswers &answers, ServiceLog &log)
    : QueryPool(answers, log, Options())
{
}

QueryPool::~QueryPool()
{
    stop();
}

void QueryPool::answer(MarketServer &market, HttpResponder responder, Question question)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_ending || m_queue.size() >= m_bound) {
        const bool ending = m_ending;
        lock.unlock();
        ++m_counters.turnedAway;
        responder.answer(ending ? m_answers.stopping() : m_answers.busy());
        return;
    }
    m_queue.push_back({&market, std::move(responder), std::move(question)});
    lock.unlock();
    m_wake.notify_one();
}

std::size_t QueryPool::waiting() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_queue.size();
}

void QueryPool::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }
    m_wake.notify_all();
    for (std::thread &thread : m_threads) {
        if (thread.joinable())
            thread.join();
    }
}

void QueryPool::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_ending || !m_queue.empty(); });
        if (m_queue.empty())
            return;
        {
            Waiting next = std::move(m_queue.front());
            m_queue.pop_front();
            lock.unlock();
            next.responder.answer(ask(*next.market, next.question));
            ++m_counters.answered;
        }
        lock.lock();
    }
}

HttpAnswer QueryPool::ask(MarketServer &market, const Question &question)
{
    try {
        return market.readers().read(question);
    } catch (const std::exception &error) {
        m_log.error("cannot read " + market.prefix() + ": " + error.what());
        return m_answers.envelope().refusal(WireStatus::Failed, "暂时无法读取数据，请稍后再试。");
    }
}

} // namespace zvx
