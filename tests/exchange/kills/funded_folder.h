#pragma once

#include "exchange/core/types.h"

#include <filesystem>
#include <string>
#include <vector>

namespace zvxtest {

/// Somebody with a session, a bank card, and money and pieces in the market of FundedFolder.
struct Trader {
    zvx::AccountId account;
    std::string phone;
    std::string password;
    std::string token;
};

/// A state folder in which trading can begin at once.
struct FundedFolder {
    static constexpr const char *kMarket = "/lc/youbika/";
    static constexpr const char *kStore = "lc-youbika.market";
    static constexpr zvx::Fen kMoney{100'000'000}; ///< of each trader
    static constexpr zvx::Quantity kPieces{500}; ///< of each trader and collection

    /// Makes it with the small catalogue and so many traders, who come back. Passwords are cheap to
    /// compare. Throws std::runtime_error.
    static std::vector<Trader> make(const std::filesystem::path &folder, int traders);
};

} // namespace zvxtest
