#pragma once

#include "exchange/accounts/account_file.h"
#include "exchange/accounts/account_request.h"
#include "exchange/accounts/action_book.h"
#include "exchange/accounts/code_book.h"
#include "exchange/accounts/link_office.h"
#include "exchange/accounts/secret.h"
#include "exchange/accounts/text_courier.h"
#include "exchange/accounts/throttle.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace zvx {

class Clock;
class PasswordPool;
class RandomSource;

/// A session as a batch left it: begun, or ended, or forgotten.
struct SessionChange {
    StoredSession session; ///< of one that ends or is forgotten the number and the kind alone
    enum Kind : std::uint8_t { Begins, Ends, IsForgotten } kind = Begins;
};

/// What a batch of requests leaves to do once it is durable.
struct Afterwards {
    std::vector<SessionChange> sessions;
    std::vector<TextMessage> texts;
    LinkChanges links;
    std::vector<ActionBook::Reply> replies;
};

/**
 * What the desk's thread does: the rules of signing in, of codes, of keys and of favourites; those
 * of one-time links stand in LinkOffice.
 *
 * carryOut() and tidy() run within AccountFile::change() and change nothing outside this object and
 * the file; what else there is to do stands in what takeAfterwards() returns. A request that needs
 * a password hashed goes to the pool, and comes back through `comeBack` as a request of its own.
 */
class AccountOffice
{
public:
    using Answered = AccountDesk::Answered;

    struct Tools {
        AccountFile &file;
        Clock &clock;
        RandomSource &random;
        PasswordPool &passwords;
        /// Hands a second half in. Any thread, also after the office is gone.
        std::function<void(AccountRequest)> comeBack;
        /// How many text messages wait for the gateway.
        std::function<std::size_t()> textsWaiting;
    };

    /// Makes the file's first rows where it is new, the demo account among them where `demo` is
    /// set. Throws StoreError or std::bad_alloc.
    AccountOffice(Tools tools, const AccountDeskOptions &options, AccountCounters &counters);

    /// `done` is left empty as soon as this object has taken charge of it.
    void carryOut(AccountRequest &request, Answered &done);
    /// Ends, forgets and wipes what is too old.
    void tidy();

    Afterwards takeAfterwards();
    /// Tells all whose answers were not taken that the desk failed.
    void fail() { m_actions.fail(); }
    /// Whether a request is out to the pool.
    bool waitsForPasswords() const { return m_actions.anyUnderWay(); }

    std::optional<AccountId> demoAccount() const { return m_demo; }
    CodePair codePair(AccountId account, std::string_view market, ActionKey key) const
    {
        return m_codes->pair(account, market, key);
    }

private:
    using Keep = ActionBook::Keep;

    // One for each kind of request. The second halves answer those who wait for their key.
    void work(SignInRequest &request, Answered &done);
    void work(CodeRequest &request, Answered &done);
    void work(RegisterRequest &request, Answered &done);
    void work(ResetRequest &request, Answered &done);
    void work(MoneyCodeCheck &request, Answered &done);
    void work(FavouriteChange &request, Answered &done);
    void work(ResolveRequest &request, Answered &done);
    void work(LinkRequest &request, Answered &done);
    void work(CardRequest &request, Answered &done);
    void work(AmountRequest &request, Answered &done);
    void work(LinkCodeRequest &request, Answered &done);
    void work(LinkConfirmation &request, Answered &done);
    void work(LinkReturn &request, Answered &done);
    void work(FavouritesQuery &request, Answered &done);
    void work(ProfileQuery &request, Answered &done);
    void work(PasswordChecked &half, Answered &done);
    void work(PasswordHashed &half, Answered &done);

    /// Sends the new password to be hashed where the code is right.
    void checkAndHash(PasswordHashed half, const Secret &code, Secret password);
    /// Counts the passwords that a peer has out to the pool. One address alone must not keep all
    /// others waiting.
    bool goesToPool(const std::string &peer);
    void cameBack(const std::string &peer);
    AccountStatus registerNow(const PasswordHashed &half);
    AccountStatus resetNow(const PasswordHashed &half);
    AccountAnswer beginSession(const StoredAccount &account, std::uint64_t client);
    void endSession(std::int64_t number, SessionState::Kind kind, TimeMs now);
    /// Whether a code may be sent now at the wish of a peer: Done, or why not.
    AccountAnswer maySendCode(const CodeOwner &owner, const std::string &peer);
    /// Sends a code that may be sent; a decoy where `known` does not fit its purpose.
    void sendCode(const CodeOwner &owner, const std::string &peer, bool known,
                  const std::string &use);
    void sendText(const CodeOwner &owner, bool known, Secret code, const std::string &use);
    AccountProfile profileOf(const StoredAccount &account) const;

    AccountFile &m_file;
    Clock &m_clock;
    RandomSource &m_random;
    PasswordPool &m_passwords;
    std::function<void(AccountRequest)> m_comeBack;
    std::function<std::size_t()> m_textsWaiting;
    const AccountLimits m_limits;
    const std::string m_platform;
    const std::string m_platformName;
    AccountCounters &m_counters;

    std::optional<AccountId> m_demo;
    AccountId m_lastAccount;
    std::int64_t m_lastSession = 0;
    std::optional<CodeBook> m_codes;
    std::optional<LinkOffice> m_links;
    Throttle m_signInsOfPeer;
    Throttle m_signInsOfPhone;
    Throttle m_textsOfPeer;
    ActionBook m_actions;
    std::map<std::string, std::size_t> m_hashesOfPeer;
    Afterwards m_afterwards;
};

} // namespace zvx
