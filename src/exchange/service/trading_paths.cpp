#include "exchange/service/trading_paths.h"

#include "exchange/service/wire_answers.h"

namespace zvx {

TradingPaths::TradingPaths(const WireAnswers &answers) : m_answers(answers) { }

TradingPaths::~TradingPaths() = default;

void TradingPaths::handle(PathCall call, AccountId)
{
    call.responder.answer(m_answers.unserved());
}

} // namespace zvx
