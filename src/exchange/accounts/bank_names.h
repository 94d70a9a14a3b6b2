#pragma once

#include <array>
#include <string_view>

namespace zvx {

/// A bank whose cards can be bound.
struct Bank {
    std::string_view id; ///< lower-case ASCII letters
    std::string_view name;
};

/// All of them, in the order in which people are asked to choose.
const std::array<Bank, 6> &knownBanks();

/// The bank of an id, or null.
const Bank *findBank(std::string_view id);

} // namespace zvx
