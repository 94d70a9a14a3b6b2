#pragma once

#include "exchange/accounts/account_file.h"
#include "exchange/accounts/code_book.h"
#include "exchange/accounts/throttle.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace zvx {

class Clock;
class RandomSource;

/// What requests at links leave to do once it is durable.
struct LinkChanges {
    std::vector<StoredLink> links; ///< as they are now
    std::vector<std::string> forgotten; ///< hashes of their tokens
    std::vector<StoredCard> cards; ///< that were bound
};

/**
 * The rules of one-time links.
 *
 * Something is prepared at a link, and confirmed; the confirmation uses the link up. Where a code
 * confirms, it is the one that was sent for this very link and what was prepared there: a code for
 * another amount, another card or another link does nothing.
 *
 * Works within AccountFile::change().
 */
class LinkOffice
{
public:
    struct Tools {
        AccountFile &file;
        Clock &clock;
        RandomSource &random;
        CodeBook &codes;
        /// Has a code sent at the wish of a peer, or says why not. `use` is what the text says that
        /// it is for.
        std::function<AccountAnswer(const CodeOwner &, const std::string &peer,
                                    const std::string &use)>
            sendCode;
    };

    /// `secret` keys the fingerprints of cards.
    LinkOffice(Tools tools, std::string secret, const AccountLimits &limits);

    AccountAnswer carryOut(const LinkRequest &request);
    AccountAnswer carryOut(const CardRequest &request);
    AccountAnswer carryOut(const AmountRequest &request);
    AccountAnswer carryOut(const LinkCodeRequest &request);
    AccountAnswer carryOut(const LinkConfirmation &request);
    AccountAnswer carryOut(const LinkReturn &request);
    void tidy();

    LinkChanges takeChanges() { return std::exchange(m_changes, {}); }

private:
    struct Found {
        AccountStatus status = AccountStatus::LinkUnknown;
        StoredLink link;
    };
    /// Done with the link where it is Live.
    Found find(const Secret &token);
    /// Sends a code for what stands in the link, and remembers both. Whoever prepares the same
    /// again within the pause, as with a button that was touched twice, gets no second code and no
    /// complaint.
    AccountAnswer sendCode(StoredLink link, const std::string &peer, bool repeated);
    AccountStatus checkCode(const StoredLink &link, const LinkConfirmation &request);
    AccountStatus bind(const StoredLink &link);
    /// Uses up all of the account's links that bind a card.
    void closeCardLinks(AccountId account);
    void put(StoredLink link);

    AccountFile &m_file;
    Clock &m_clock;
    RandomSource &m_random;
    CodeBook &m_codes;
    decltype(Tools::sendCode) m_sendCode;
    std::string m_secret;
    const AccountLimits &m_limits;
    Throttle m_linksOfAccount;
    LinkChanges m_changes;
};

} // namespace zvx
