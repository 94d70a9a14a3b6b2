#pragma once

#include "exchange/service/path_call.h"
#include "exchange/service/poll_hub.h"

#include <cstddef>
#include <string>

namespace zvx {

class SessionGate;
class WireAnswers;

/// `sync.html`: answered at once where something differs, and kept until it does where nothing
/// does.
class PollPaths
{
public:
    /// At most `bound` polls wait. `alarm` asks for a call of expire(); `answers` has to outlive
    /// this.
    PollPaths(const WireAnswers &answers, std::size_t bound, PollHub::Alarm alarm);

    /// Answers the path, or keeps the duty to. `gate` is that of the market's platform. On the
    /// server's thread.
    void handle(PathCall call, const SessionGate &gate);

    /// Those that wait.
    PollHub &hub() { return m_hub; }
    const PollHub &hub() const { return m_hub; }

private:
    HttpAnswer answerTo(MarketBoard &board, const SyncQuestion &question) const;

    const WireAnswers &m_answers;
    PollHub m_hub;
};

} // namespace zvx
