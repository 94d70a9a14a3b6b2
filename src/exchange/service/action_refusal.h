#pragma once

#include "exchange/core/command.h"

#include <string_view>

namespace zvx {

/// What a trader is told of an action that the market did not carry out.
struct ActionRefusal {
    std::string_view reason; ///< the protocol's word
    std::string_view message; ///< a Chinese sentence
};

/// For every status but those that say that something was done.
const ActionRefusal &refusalOf(Status status);

} // namespace zvx
