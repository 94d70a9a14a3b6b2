#include "exchange/service/poll_hub.h"

#include "exchange/service/session_gate.h"

#include <iterator>
#include <utility>
#include <variant>

namespace zvx {

namespace {

/// Polls that are answered before the thread looks after orders and other requests again.
constexpr std::size_t wakesAtOnce = 32;

} // namespace

PollHub::PollHub(std::size_t bound, Answer answer, Alarm alarm)
    : m_bound(bound), m_answer(std::move(answer)), m_alarm(std::move(alarm))
{
}

void PollHub::park(MarketBoard &board, const SyncQuestion &question, HttpResponder responder,
                   Time until, std::optional<PollSession> session)
{
    const std::uint64_t id = ++m_lastId;
    Room &room = m_rooms[&board];
    if (session)
        m_ofSession.emplace(SessionKey(session->gate, session->number, id), &board);
    const auto poll
        = room.polls.emplace(id, Poll{question, std::move(responder), until, std::move(session)})
              .first;
    if (question.account)
        room.ofAccount.insert({*question.account, id});
    m_expiries.insert({until, id, &board});
    ++m_count;
    setAlarm();
    poll->second.responder.watch([this, &board, id] { forget(board, id); });
}

void PollHub::wake(MarketBoard &board)
{
    const auto found = m_rooms.find(&board);
    if (found == m_rooms.end())
        return;
    Room &room = found->second;
    // Those that an earlier change has not reached yet are looked at once, for both.
    room.toWake.clear();
    for (const auto &entry : room.polls)
        room.toWake.push_back(entry.first);
    wakeSome(board, room);
}

void PollHub::wakeSome(MarketBoard &board, Room &room)
{
    for (std::size_t told = 0; told < wakesAtOnce && !room.toWake.empty();) {
        const auto poll = room.polls.find(room.toWake.back());
        room.toWake.pop_back();
        if (poll == room.polls.end() || !board.differs(poll->second.question))
            continue;
        settle(board, room, poll);
        ++told;
    }
    if (!room.toWake.empty() && !m_goesOnWaking) {
        m_goesOnWaking = true;
        m_alarm(Time());
    }
}

void PollHub::wake(MarketBoard &board, const std::vector<AccountId> &accounts)
{
    const auto found = m_rooms.find(&board);
    if (found == m_rooms.end())
        return;
    Room &room = found->second;
    std::vector<std::uint64_t> ids;
    for (const AccountId account : accounts) {
        for (auto entry = room.ofAccount.lower_bound({account, 0});
             entry != room.ofAccount.end() && entry->first == account; ++entry)
            ids.push_back(entry->second);
    }
    for (const std::uint64_t id : ids) {
        const auto poll = room.polls.find(id);
        if (poll != room.polls.end() && board.differs(poll->second.question))
            settle(board, room, poll);
    }
}

void PollHub::endSessions(const SessionGate &gate, const std::vector<std::int64_t> &numbers)
{
    for (const std::int64_t number : numbers) {
        const SessionKey first(&gate, number, 0);
        const SessionKey behind(&gate, number + 1, 0);
        for (auto entry = m_ofSession.lower_bound(first);
             entry != m_ofSession.end() && entry->first < behind;
             entry = m_ofSession.lower_bound(first)) {
            MarketBoard &board = *entry->second;
            Room &room = m_rooms[&board];
            Poll told = take(board, room, room.polls.find(std::get<2>(entry->first)));
            auto asked = gate.ask(told.session->authorization.text());
            // A gate that still knows the session judges the client's next poll.
            if (auto *over = std::get_if<HttpAnswer>(&asked))
                told.responder.answer(std::move(*over));
            else
                told.responder.answer(m_answer(board, told.question));
        }
    }
}

void PollHub::expire(Time now)
{
    if (m_goesOnWaking) {
        m_goesOnWaking = false;
        for (auto &[board, room] : m_rooms)
            wakeSome(*board, room);
    }
    if (m_alarmAt && *m_alarmAt <= now)
        m_alarmAt.reset();
    while (!m_expiries.empty() && m_expiries.begin()->until <= now) {
        const Expiry due = *m_expiries.begin();
        Room &room = m_rooms[due.board];
        settle(*due.board, room, room.polls.find(due.id));
    }
    setAlarm();
}

void PollHub::endAll()
{
    for (auto &[board, room] : m_rooms) {
        for (auto poll = room.polls.begin(); poll != room.polls.end();)
            poll = settle(*board, room, poll);
    }
}

PollHub::Polls::iterator PollHub::settle(MarketBoard &board, Room &room, Polls::iterator poll)
{
    const auto next = std::next(poll);
    Poll told = take(board, room, poll);
    told.responder.answer(m_answer(board, told.question));
    return next;
}

void PollHub::forget(MarketBoard &board, std::uint64_t id)
{
    Room &room = m_rooms[&board];
    const auto poll = room.polls.find(id);
    if (poll != room.polls.end())
        take(board, room, poll);
}

PollHub::Poll PollHub::take(MarketBoard &board, Room &room, Polls::iterator poll)
{
    const std::uint64_t id = poll->first;
    Poll taken = std::move(poll->second);
    room.polls.erase(poll);
    m_expiries.erase({taken.until, id, &board});
    --m_count;
    if (taken.question.account)
        room.ofAccount.erase({*taken.question.account, id});
    if (taken.session)
        m_ofSession.erase({taken.session->gate, taken.session->number, id});
    return taken;
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
