#pragma once

#include "exchange/accounts/bank_card.h"
#include "exchange/accounts/secret.h"
#include "exchange/core/types.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zvx {

/// What a one-time link is for. Stored; new values go to the end.
enum class LinkPurpose : std::uint8_t {
    OpenAccount = 0, ///< binds a bank card to the account
    MoneyIn = 1,
    MoneyOut = 2,
};

/// What a link stands for.
struct LinkState {
    enum Kind : std::uint8_t {
        Live,
        Used, ///< it has done its work
        Expired,
        Unknown, ///< never was, or was forgotten
    };
    Kind kind = Unknown;
    LinkPurpose purpose = LinkPurpose::OpenAccount;
    AccountId account; ///< of a link that is not Unknown
    std::string market; ///< prefix of the server that it was made on, such as "/lc/youbika/"
    /// What was prepared last, and is carried out by the confirmation.
    std::optional<BankCard> card; ///< of OpenAccount
    Fen amount; ///< of MoneyIn and MoneyOut; 0 where nothing was prepared
    ActionKey key; ///< under which the money moves; another one after the link was given back
};

struct LinkRequest {
    LinkPurpose purpose = LinkPurpose::OpenAccount;
    AccountId account;
    std::string market;
};

/// Prepares the card that is to be bound. Has a code sent to the account's phone.
struct CardRequest {
    Secret link;
    std::string bank; ///< id of a known one
    std::string holder;
    Secret number; ///< as a person writes it, blanks and hyphens included
    std::string peer;
};

/// Prepares the amount that is to be moved. For money in it has a code sent.
struct AmountRequest {
    Secret link;
    Fen amount;
    std::string peer;
};

/// Has another code sent for what was prepared.
struct LinkCodeRequest {
    Secret link;
    std::string peer;
};

/// Carries out what was prepared, and uses up the link.
struct LinkConfirmation {
    Secret link;
    Secret code; ///< empty for money out, which needs none
    std::string peer;
};

/// Makes a used link of money live again, since nothing was moved under its key.
struct LinkReturn {
    Secret link;
    ActionKey key;
};

} // namespace zvx
