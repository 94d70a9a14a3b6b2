#pragma once

#include "exchange/accounts/account_status.h"
#include "exchange/service/http_message.h"

#include <cstdint>

namespace zvx {

class WireAnswers;

/// The answer to an operation on accounts that was not done; `wait` in seconds stands in the
/// sentences that name one.
HttpAnswer accountRefusal(const WireAnswers &answers, AccountStatus status, std::int64_t wait = 0);

} // namespace zvx
