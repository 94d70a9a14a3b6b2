#pragma once

#include "exchange/accounts/secret.h"
#include "exchange/service/http_message.h"
#include "exchange/service/market_board.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zvx {

class SessionGate;

/// The session in whose name a poll waits; the poll ends with it.
struct PollSession {
    const SessionGate *gate; ///< of the platform that counts the number
    std::int64_t number;
    Secret authorization; ///< what the gate is asked with
};

/**
 * The polls that wait for a change. A poll costs an entry here and a connection, no thread.
 *
 * On the server's thread only.
 */
class PollHub
{
public:
    using Time = std::chrono::steady_clock::time_point;
    /// Makes the answer to a poll of this board from what it holds now.
    using Answer = std::function<HttpAnswer(MarketBoard &, const SyncQuestion &)>;
    /// Asks for one call of `expire` at the given time.
    using Alarm = std::function<void(Time)>;

    PollHub(std::size_t bound, Answer answer, Alarm alarm);

    bool isFull() const { return m_count >= m_bound; }
    std::size_t parked() const { return m_count; }

    /// Keeps the poll until `until`, a change of `board`, or its client's leaving. Not when full.
    void park(MarketBoard &board, const SyncQuestion &question, HttpResponder responder, Time until,
              std::optional<PollSession> session = {});
    /// Answers the board's polls for which something differs, some of them now and the others in
    /// the calls of `expire` that it asks for: whatever else the thread has to do comes in between.
    void wake(MarketBoard &board);
    /// The same among the polls of these accounts alone.
    void wake(MarketBoard &board, const std::vector<AccountId> &accounts);
    /// Answers the polls of sessions that ended with what their gate says of them.
    void endSessions(const SessionGate &gate, const std::vector<std::int64_t> &numbers);
    /// Answers the polls whose time has passed, and goes on with what `wake` left.
    void expire(Time now);
    /// Answers all of them as they stand.
    void endAll();

private:
    struct Poll {
        SyncQuestion question;
        HttpResponder responder;
        Time until;
        std::optional<PollSession> session;
    };
    using Polls = std::unordered_map<std::uint64_t, Poll>;
    /// What waits for one board.
    struct Room {
        Polls polls;
        std::set<std::pair<AccountId, std::uint64_t>> ofAccount; ///< with the polls' ids
        std::vector<std::uint64_t> toWake; ///< ids of polls that are still to be looked at
    };
    struct Expiry {
        Time until;
        std::uint64_t id;
        MarketBoard *board;
        bool operator<(const Expiry &other) const
        {
            return std::tie(until, id) < std::tie(other.until, other.id);
        }
    };

    /// A session's number and a poll's id.
    using SessionKey = std::tuple<const SessionGate *, std::int64_t, std::uint64_t>;

    void wakeSome(MarketBoard &board, Room &room);
    Polls::iterator settle(MarketBoard &board, Room &room, Polls::iterator poll);
    /// Takes a poll out of everything that names it.
    Poll take(MarketBoard &board, Room &room, Polls::iterator poll);
    void forget(MarketBoard &board, std::uint64_t id);
    void setAlarm();

    std::size_t m_bound;
    Answer m_answer;
    Alarm m_alarm;
    std::unordered_map<MarketBoard *, Room> m_rooms;
    std::map<SessionKey, MarketBoard *> m_ofSession;
    std::set<Expiry> m_expiries;
    std::optional<Time> m_alarmAt;
    bool m_goesOnWaking = false; ///< a call of `expire` was asked for, to wake more
    std::size_t m_count = 0;
    std::uint64_t m_lastId = 0;
};

} // namespace zvx
