#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/accounts/bank_card.h"
#include "exchange/accounts/one_time_link.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

class SqliteConnection;

/// Marks a SQLite file as a platform's accounts: "ZVXA".
constexpr int kAccountsApplicationId = 0x5a565841;

/// The steps that lead to today's tables; a released one never changes.
const std::vector<std::string> &accountMigrations();

struct StoredAccount {
    AccountId id;
    std::string phone;
    std::string name;
    std::string referee;
    std::string password; ///< as the hasher made it
    std::int64_t passwordVersion = 1; ///< goes up with each new password
    TimeMs created;
};

struct StoredSession {
    std::int64_t number = 0;
    std::string token; ///< its hash
    AccountId account;
    std::uint64_t client = 0;
    TimeMs created;
    SessionState::Kind kind = SessionState::Live;
    TimeMs ended; ///< where it is not Live
};

/// The newest code of a purpose and phone.
struct StoredCode {
    std::string hash;
    TimeMs issued;
    int guesses = 0; ///< wrong ones
    bool used = false;
};

struct StoredCard {
    AccountId account;
    BankCard card;
    TimeMs bound;
};

struct StoredLink {
    std::string token; ///< its hash
    LinkPurpose purpose = LinkPurpose::OpenAccount;
    AccountId account;
    std::string market;
    TimeMs issued;
    bool used = false;
    std::int64_t round = 0; ///< how often it was given back
    // What was prepared: the card of OpenAccount, the amount of the others.
    std::optional<BankCard> card;
    Fen amount;
    TimeMs codeIssued; ///< names the code that confirms it
};

/// A key belongs to an account, or to none.
struct KeyName {
    AccountId account;
    ActionKey key;

    friend bool operator==(const KeyName &a, const KeyName &b)
    {
        return a.account == b.account && a.key == b.key;
    }
};

struct StoredAnswer {
    AccountAction action = AccountAction::SignIn;
    std::string fingerprint; ///< of the content; "" for a burnt key
    AccountStatus status = AccountStatus::Done;
};

/**
 * The rows of the accounts' file, and nothing about what they mean.
 *
 * One thread at a time. Everything throws StoreError; after a change() that threw nothing may be
 * called any more but the destructor. All but load functions are called within change().
 */
class AccountFile
{
public:
    static constexpr int kLogFrames = 2'000;

    /// Opens the file or makes it, readable and writable by its owner alone; see SqliteConnection.
    AccountFile(const std::filesystem::path &file, const std::string &vfs, int logFrames);
    ~AccountFile();

    /// One transaction, durable on return. Tells whether anything was changed.
    bool change(const std::function<void()> &work);

    std::optional<std::string> meta(std::string_view name);
    void putMeta(std::string_view name, std::string_view value);

    AccountId lastAccount();
    std::optional<StoredAccount> account(AccountId id);
    std::optional<StoredAccount> accountOf(std::string_view phone);
    void putAccount(const StoredAccount &account);
    void setPassword(AccountId id, std::string_view password);
    void setName(AccountId id, std::string_view name);

    std::vector<StoredCard> cards();
    std::optional<BankCard> card(AccountId account);
    /// Whose card has this fingerprint.
    std::optional<AccountId> cardOwner(std::string_view fingerprint);
    void putCard(const StoredCard &card);

    std::vector<StoredLink> links();
    std::optional<StoredLink> link(std::string_view token);
    std::vector<StoredLink> unusedLinks(AccountId account, LinkPurpose purpose);
    void putLink(const StoredLink &link);
    /// Forgets links that were made before `before`, and returns the hashes of their tokens.
    std::vector<std::string> forgetLinks(TimeMs before);

    std::vector<StoredSession> sessions();
    std::int64_t lastSession();
    /// Oldest first.
    std::vector<StoredSession> liveSessions(AccountId account);
    std::vector<StoredSession> liveSessionsUntil(TimeMs created);
    void putSession(const StoredSession &session);
    void endSession(std::int64_t number, SessionState::Kind kind, TimeMs now);
    /// Forgets ended sessions: those that ended before `before`, and all but the last `keep`.
    /// Returns their numbers.
    std::vector<std::int64_t> forgetSessions(TimeMs before, std::size_t keep);

    std::optional<StoredCode> code(CodePurpose purpose, std::string_view phone);
    void putCode(CodePurpose purpose, std::string_view phone, const StoredCode &code);
    void forgetCodes(TimeMs before);

    /// Codes that were sent to a phone on a day, over all purposes.
    int codesSent(std::string_view phone, std::int64_t day);
    void countCodeSent(std::string_view phone, std::int64_t day);
    /// Wrong guesses at codes of a phone on a day: from one peer, or from all.
    int guesses(std::string_view phone, std::int64_t day, std::string_view peer);
    int guesses(std::string_view phone, std::int64_t day);
    void countGuess(std::string_view phone, std::int64_t day, std::string_view peer);
    void forgetCounts(std::int64_t beforeDay);

    std::optional<StoredAnswer> answer(const KeyName &name);
    void putAnswer(const KeyName &name, const StoredAnswer &answer, TimeMs now);
    /// Forgets what is older than `before`, and all but the last `keep`.
    void forgetAnswers(TimeMs before, std::size_t keep);

    std::vector<CollectionId> favourites(AccountId account, std::string_view market,
                                         std::int64_t skip, std::int64_t size);
    std::size_t favouriteCount(AccountId account, std::string_view market);
    /// Removes it where it is there.
    void dropFavourite(AccountId account, std::string_view market, CollectionId collection);
    /// Appends one that is not there.
    void appendFavourite(AccountId account, std::string_view market, CollectionId collection);

private:
    class Query;
    class Statements;

    std::unique_ptr<SqliteConnection> m_connection;
    std::unique_ptr<Statements> m_statements;
};

} // namespace zvx
