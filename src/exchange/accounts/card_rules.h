#pragma once

#include "exchange/accounts/secret.h"

#include <string_view>

namespace zvx {

/// The digits of a card number as a person writes it: blanks and hyphens between them are left out.
/// Empty where anything else stands there, where it begins with 0 or has fewer than 16 or more than
/// 19 digits, or where its last digit does not fit the others (Luhn).
Secret cardDigits(std::string_view text);

/// A name as it stands on a card: 2 to 30 letters or Chinese characters, with single blanks, dots,
/// hyphens and apostrophes between them. `text` is UTF-8.
bool isHolderName(std::string_view text);

} // namespace zvx
