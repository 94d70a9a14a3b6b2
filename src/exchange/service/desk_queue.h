#pragma once

#include "exchange/core/types.h"
#include "exchange/store/clock.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace zvx {

/**
 * Where a desk's thread finds its work: errands of those who wait for an answer, and the words of
 * the outside that the desk deals with. Outlives the desk while the outside may still speak.
 *
 * An office has hear(id, word), tick(), and due() which says when tick() has something to do.
 */
template <typename Office, typename Word>
class DeskQueue
{
public:
    using Errand = std::function<void(Office &)>;
    enum class Entry { Taken, Full, Closed };

    /// At most so many errands wait.
    explicit DeskQueue(std::size_t bound) : m_bound(bound) { }

    Entry hand(Errand errand)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!m_accepting)
                return Entry::Closed;
            if (m_errands.size() >= m_bound)
                return Entry::Full;
            m_errands.push_back(std::move(errand));
        }
        m_wake.notify_all();
        return Entry::Taken;
    }

    void bring(ActionKey id, const Word &word)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_deserted)
                return;
            m_words.emplace_back(id, word);
        }
        m_wake.notify_all();
    }

    /// Takes no more errands; serve() returns when it has done those that wait.
    void close()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_accepting = false;
        }
        m_wake.notify_all();
    }

    /// The desk's thread. `afterRound` is called whenever something has been done.
    template <typename AfterRound>
    void serve(Office &office, Clock &clock, const AfterRound &afterRound)
    {
        std::deque<Errand> errands;
        std::deque<std::pair<ActionKey, Word>> words;
        while (await(office, clock, errands, words)) {
            for (const auto &[id, word] : words)
                office.hear(id, word);
            for (const Errand &errand : errands)
                errand(office);
            office.tick();
            afterRound();
            errands.clear();
            words.clear();
        }
    }

private:
    /// Waits until there is something to do. False where nothing will come any more.
    bool await(const Office &office, Clock &clock, std::deque<Errand> &errands,
               std::deque<std::pair<ActionKey, Word>> &words)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;) {
            const std::optional<SteadyMs> due = office.due();
            if (!m_errands.empty() || !m_words.empty()
                || (m_accepting && due && *due <= clock.steady()))
                break;
            if (!m_accepting) {
                m_deserted = true;
                return false;
            }
            clock.wait(m_wake, lock, due);
        }
        errands.swap(m_errands);
        words.swap(m_words);
        return true;
    }

    const std::size_t m_bound;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Errand> m_errands;
    std::deque<std::pair<ActionKey, Word>> m_words;
    bool m_accepting = true;
    bool m_deserted = false; ///< nobody listens any more
};

} // namespace zvx
