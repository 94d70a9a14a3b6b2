#pragma once

#include "exchange/accounts/account_file.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace zvx {

struct ResolveRequest {
    AccountAction action = AccountAction::SignIn;
    KeyName name;
};

struct FavouritesQuery {
    AccountId account;
    std::string market;
    std::int64_t page = 1;
    std::int64_t size = 0;
    std::function<void(const FavouritesAnswer &)> done;
};

struct ProfileQuery {
    AccountId account;
    std::function<void(const ProfileAnswer &)> done;
};

/// The second half of a sign-in: what the pool says to the password.
struct PasswordChecked {
    KeyName name;
    std::string phone;
    std::string peer; ///< its group
    std::uint64_t client = 0;
    AccountId account; ///< none where the phone has no account
    std::int64_t passwordVersion = 0; ///< of the password that was compared
    std::optional<bool> right;
};

/// The second half of a registration or a reset: the new password's hash.
struct PasswordHashed {
    KeyName name;
    AccountAction action = AccountAction::Register;
    std::string referee;
    std::string phone;
    std::string peer; ///< its group
    TimeMs issued; ///< names the code that allowed it
    std::optional<std::string> stored;
};

using AccountRequest
    = std::variant<SignInRequest, CodeRequest, RegisterRequest, ResetRequest, MoneyCodeCheck,
                   FavouriteChange, ResolveRequest, LinkRequest, CardRequest, AmountRequest,
                   LinkCodeRequest, LinkConfirmation, LinkReturn, FavouritesQuery, ProfileQuery,
                   PasswordChecked, PasswordHashed>;

// What is wrong with a request before anything is known of its account: Done where nothing is.
AccountStatus problemOf(const SignInRequest &request);
AccountStatus problemOf(const CodeRequest &request);
AccountStatus problemOf(const RegisterRequest &request);
AccountStatus problemOf(const ResetRequest &request);
AccountStatus problemOf(const MoneyCodeCheck &request);
AccountStatus problemOf(const FavouriteChange &request);
AccountStatus problemOf(const ResolveRequest &request);
AccountStatus problemOf(const LinkRequest &request);
AccountStatus problemOf(const CardRequest &request);
AccountStatus problemOf(const AmountRequest &request);
AccountStatus problemOf(const LinkCodeRequest &request);
AccountStatus problemOf(const LinkConfirmation &request);
AccountStatus problemOf(const LinkReturn &request);
AccountStatus problemOf(const FavouritesQuery &query);
AccountStatus problemOf(const ProfileQuery &query);

} // namespace zvx
