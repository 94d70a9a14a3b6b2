#pragma once

#include "exchange/service/http_message.h"
#include "exchange/service/market_board.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zvx {

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
    void park(MarketBoard &board, const SyncQuestion &question, HttpResponder responder,
              Time until);
    /// Answers the board's polls for which something differs now.
    void wake(MarketBoard &board);
    /// The same among the polls of these accounts alone.
    void wake(MarketBoard &board, const std::vector<AccountId> &accounts);
    /// Answers the polls whose time has passed.
    void expire(Time now);
    /// Answers all of them as they stand.
    void endAll();

private:
    struct Poll {
        SyncQuestion question;
        HttpResponder responder;
        Time until;
    };
    using Polls = std::unordered_map<std::uint64_t, Poll>;
    /// What waits for one board.
    struct Room {
        Polls polls;
        std::set<std::pair<AccountId, std::uint64_t>> ofAccount; ///< with the polls' ids
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

    Polls::iterator settle(MarketBoard &board, Room &room, Polls::iterator poll);
    void unlist(MarketBoard &board, Room &room, std::uint64_t id, const Poll &poll);
    void forget(MarketBoard &board, std::uint64_t id);
    void setAlarm();

    std::size_t m_bound;
    Answer m_answer;
    Alarm m_alarm;
    std::unordered_map<MarketBoard *, Room> m_rooms;
    std::set<Expiry> m_expiries;
    std::optional<Time> m_alarmAt;
    std::size_t m_count = 0;
    std::uint64_t m_lastId = 0;
};

} // namespace zvx
