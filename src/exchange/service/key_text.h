#pragma once

#include "exchange/core/types.h"

#include <string>

namespace zvx {

/// The 32 lower-case hexadecimal digits that ActionKey::fromText() reads.
std::string keyText(ActionKey key);

} // namespace zvx
