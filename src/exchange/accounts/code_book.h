#pragma once

#include "exchange/accounts/account_file.h"
#include "exchange/accounts/secret.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace zvx {

class RandomSource;

/// Whose code it is.
struct CodeOwner {
    CodePurpose purpose = CodePurpose::Register;
    std::string phone;
    /// What the code is good for and for nothing else, where that is known when it is sent. The
    /// newest code counts, whatever it was bound to.
    std::string bound = {};
};

/**
 * Codes of text messages: which was sent last, and how often it was guessed at.
 *
 * A phone that must not learn a code, since it has no account to reset or has one already, gets a
 * decoy: it is counted and guessed at like every code, and no text matches it. Nothing that this
 * class answers tells a decoy from a code.
 *
 * Works within AccountFile::change().
 */
class CodeBook
{
public:
    /// `secret` keys the stored hashes.
    CodeBook(AccountFile &file, RandomSource &random, std::string secret,
             const AccountLimits &limits);

    struct Refusal {
        AccountStatus status = AccountStatus::Done;
        std::int64_t wait = 0; ///< seconds
    };
    /// Whether a code may be sent now: Done, CodePause or CodeLimit.
    Refusal mayIssue(const CodeOwner &owner, TimeMs now);
    /// Makes a code the newest one of its owner. The text is empty for a decoy.
    Secret issue(const CodeOwner &owner, bool decoy, TimeMs now);

    /// The pair of a code that an account has sent for one market by an action with this key: the
    /// same each time, and nobody else can tell it. Any thread.
    CodePair pair(AccountId account, std::string_view market, ActionKey key) const;

    struct Checked {
        AccountStatus status = AccountStatus::Done;
        TimeMs issued = {}; ///< names the code that was right
    };
    /// Done where the code is right, which uses nothing up and counts for nothing; a wrong one is
    /// counted.
    Checked check(const CodeOwner &owner, std::string_view code, std::string_view peer, TimeMs now);
    /// When the newest code was sent, which names it.
    std::optional<TimeMs> issued(const CodeOwner &owner);
    /// Uses up the code of that time. False where it was used up before.
    bool use(const CodeOwner &owner, TimeMs issued);

private:
    std::string hash(const CodeOwner &owner, TimeMs issued, std::string_view code) const;

    AccountFile &m_file;
    RandomSource &m_random;
    std::string m_secret;
    const AccountLimits &m_limits;
};

} // namespace zvx
