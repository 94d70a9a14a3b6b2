#pragma once

#include "exchange/core/command.h"
#include "exchange/service/money_desk.h"

#include <string>
#include <string_view>

namespace zvx {

/// The protocol's word for a transfer that a rule does not allow.
std::string_view moneyReason(Status status);

/// A Chinese sentence that says why, with the limit where it is one.
std::string moneySentence(Status status, bool incoming, const MoneyLimits &limits);

/// The outcome of a transfer that was not looked at, or whose market has ended: Busy or Failed.
MoneyDesk::Outcome notTried(MoneyDesk::Status status);

} // namespace zvx
