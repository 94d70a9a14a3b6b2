#include "exchange/service/account_refusal.h"

#include "exchange/service/wire_answers.h"

namespace zvx {

HttpAnswer accountRefusal(const WireAnswers &answers, AccountStatus status, std::int64_t wait)
{
    const auto tell = [&](WireStatus wire, std::string_view word = {}) {
        return answers.envelope().refusal(wire, sentence(status, wait), word);
    };
    switch (verdict(status)) {
    case AccountVerdict::Malformed:
        return tell(WireStatus::BadRequest, reason(status));
    case AccountVerdict::Busy:
        return tell(WireStatus::Busy);
    case AccountVerdict::Failed:
        return tell(WireStatus::Failed);
    default:
        return tell(WireStatus::Refused, reason(status));
    }
}

} // namespace zvx
