#pragma once

#include "exchange/service/path_call.h"

namespace zvx {

class MarketBoard;
class ParameterReader;
class WireAnswers;

/// What everybody may read of a market as it stands: answered at once, from its board.
class MarketPaths
{
public:
    /// `answers` has to outlive this.
    explicit MarketPaths(const WireAnswers &answers);

    /// Answers a path of PathRoom::Market whose method fits. On the server's thread.
    void handle(PathCall call) const;

    /// Which client is the newest, and which is too old. A client of another protocol has to be
    /// able to learn it, too.
    HttpAnswer update() const;

private:
    HttpAnswer answerTo(const PathCall &call) const;
    HttpAnswer ofCollection(const PathCall &call, ParameterReader &read) const;

    const WireAnswers &m_answers;
};

} // namespace zvx
