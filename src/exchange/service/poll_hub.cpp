#include "exchange/service/poll_hub.h"

namespace zvx {

PollHub::PollHub(std::size_t bound, Answer answer, Alarm alarm)
    : m_bound(bound), m_answer(std::move(answer)), m_alarm(std::move(alarm))
{
}

void PollHub::park(MarketBoard &board, const SyncQuestion &question, HttpResponder responder,
                   Time until)
{
    const std::uint64_t id = ++m_lastId;
    Polls &polls = m_polls[&board];
    const auto poll = polls.emplace(id, Poll{question, std::move(responder), until}).first;
    m_expiries.insert({until, id, &board});
    ++m_count;
    setAlarm();
    poll->second.responder.watch([this, &board, id] { forget(board, id); });
}

void PollHub::wake(MarketBoard &board)
{
    const auto found = m_polls.find(&board);
    if (found == m_polls.end())
        return;
    Polls &polls = found->second;
    for (auto poll = polls.begin(); poll != polls.end();) {
        if (board.differs(poll->second.question))
            poll = settle(board, polls, poll);
        else
            ++poll;
    }
}

void PollHub::expire(Time now)
{
    m_alarmAt.reset();
    while (!m_expiries.empty() && m_expiries.begin()->until <= now) {
        const Expiry due = *m_expiries.begin();
        Polls &polls = m_polls[due.board];
        settle(*due.board, polls, polls.find(due.id));
    }
    setAlarm();
}

void PollHub::endAll()
{
    for (auto &[board, polls] : m_polls) {
        for (auto poll = polls.begin(); poll != polls.end();)
            poll = settle(*board, polls, poll);
    }
}

PollHub::Polls::iterator PollHub::settle(MarketBoard &board, Polls &polls, Polls::iterator poll)
{
    Poll told = std::move(poll->second);
    m_expiries.erase({told.until, poll->first, &board});
    --m_count;
    const auto next = polls.erase(poll);
    told.responder.answer(m_answer(board, told.question));
    return next;
}

void PollHub::forget(MarketBoard &board, std::uint64_t id)
{
    Polls &polls = m_polls[&board];
    const auto poll = polls.find(id);
    if (poll == polls.end())
        return;
    m_expiries.erase({poll->second.until, id, &board});
    --m_count;
    polls.erase(poll);
}

void PollHub::setAlarm()
{
    if (m_expiries.empty())
        return;
    const Time first = m_expiries.begin()->until;
    if (m_alarmAt && *m_alarmAt <= first)
        return;
    m_alarmAt = first;
    m_alarm(first);
}

} // namespace zvx
