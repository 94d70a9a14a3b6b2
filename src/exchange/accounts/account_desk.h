#pragma once

#include "exchange/accounts/account_status.h"
#include "exchange/accounts/bank_card.h"
#include "exchange/accounts/one_time_link.h"
#include "exchange/accounts/secret.h"
#include "exchange/core/types.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

class Clock;
class PasswordPool;
class RandomSource;
class TextGateway;

/// What a code is good for. Stored; new values go to the end.
enum class CodePurpose : std::uint8_t {
    Register = 0, ///< 4 digits
    Reset = 1, ///< 4 digits
    Money = 2, ///< 6 digits, for a signed-in account
    Link = 3, ///< 6 digits, for what was prepared at a one-time link
};

/// What a key was used for. Stored; new values go to the end.
enum class AccountAction : std::uint8_t {
    SignIn = 0,
    SendRegisterCode = 1,
    SendResetCode = 2,
    SendMoneyCode = 3,
    Register = 4,
    Reset = 5,
    CheckMoneyCode = 6,
    AddFavourite = 7,
    RemoveFavourite = 8,
};

/// The action that sends a code of this purpose.
AccountAction sendAction(CodePurpose purpose);

struct AccountLimits {
    static constexpr std::int64_t kMinute = 60'000;
    static constexpr std::int64_t kDay = 24 * 60 * kMinute;

    std::size_t queueBound = 1'024; ///< requests that may wait for the desk's thread
    std::size_t batchBound = 256; ///< requests in one commit, at least 1
    std::size_t textBound = 256; ///< text messages that may wait for the gateway

    std::int64_t sessionLife = 30 * kDay; ///< ms from the sign-in, however much it is used
    std::size_t sessionsOfClient = 8; ///< live ones of one account and client; the oldest goes
    std::size_t endedSessions = 100'000; ///< that are remembered, for at most sessionLife

    std::int64_t codeLife = 5 * kMinute; ///< ms
    std::int64_t codePause = kMinute; ///< ms between two codes for a phone and purpose
    int codesOfDay = 10; ///< for a phone over all purposes; a day is one of UTC+8
    int guessesOfCode = 5; ///< wrong ones at one code
    int guessesOfPeer = 5; ///< wrong ones from one address at codes of one phone in a day
    int guessesOfPhone = 15; ///< wrong ones at codes of one phone in a day, over all purposes

    int signInsOfPeer = 10; ///< from one address at one phone, at once
    std::int64_t signInOfPeerEvery = 30'000; ///< ms until one more is allowed
    int signInsOfPhone = 60; ///< at one phone from everywhere, at once
    std::int64_t signInOfPhoneEvery = 10'000; ///< ms until one more is allowed
    std::size_t hashesOfPeer = 16; ///< passwords of one address that may be out to the pool
    int textsOfPeer = 60; ///< codes that one address may have sent, at once, over all phones
    std::int64_t textOfPeerEvery = 10'000; ///< ms until one more is allowed
    std::size_t throttleBound = 100'000; ///< counted phones and addresses; more are told Busy

    std::int64_t keyLife = 2 * kDay; ///< ms for which the answer of a key is known
    std::size_t keyBound = 500'000; ///< stored ones; the oldest go first
    std::int64_t signInKeyLife = 10 * kMinute; ///< ms for which a sign-in's answer is known
    int burntAtOnce = 1'000; ///< keys that can be burnt without an account; more are told Busy
    std::int64_t burntEvery = 10; ///< ms until one more is allowed
    std::size_t keysInMemory = 20'000; ///< answers that are not stored; the oldest go first
    std::size_t waitersOfKey = 16; ///< repetitions that wait for the first answer of their key

    std::size_t favourites = 1'000; ///< of one account on one market

    std::int64_t linkLife = 15 * kMinute; ///< ms from the link's making
    int linksOfAccount = 40; ///< made for one account, at once
    std::int64_t linkOfAccountEvery = 10'000; ///< ms until one more is allowed
};

/// An account as its owner may see it.
struct AccountProfile {
    AccountId id;
    std::string number; ///< "LC00000001": what the user calls the account number
    std::string phone;
    std::string name; ///< never empty: a masked phone, "138****0000", where nobody gave a name
    std::string referee; ///< a phone or ""
    TimeMs created;
};

/// The answer to an action.
struct AccountAnswer {
    AccountStatus status = AccountStatus::Done;
    std::int64_t wait = 0; ///< seconds to wait, for TooOften and CodePause
    Secret token = {}; ///< of a sign-in that succeeded, or of a link that was made
    std::int64_t session = 0; ///< number of the session that the token belongs to
    AccountProfile profile = {}; ///< of a sign-in that succeeded
};

struct FavouritesAnswer {
    AccountStatus status = AccountStatus::Done;
    std::vector<CollectionId> collections; ///< in the order in which they were added
};

struct ProfileAnswer {
    AccountStatus status = AccountStatus::Done;
    AccountProfile profile;
};

/// What a token stands for.
struct SessionState {
    enum Kind : std::uint8_t {
        Live,
        Elsewhere, ///< ended since the account signed in elsewhere
        Ended, ///< by age, by a new password, or as the oldest of too many
        Unknown, ///< never was, or was forgotten
    };
    Kind kind = Unknown;
    AccountId account; ///< of a session that is not Unknown
    std::uint64_t client = 0; ///< as the sign-in named it
    std::int64_t session = 0; ///< its number: 1, 2, 3 ...; never given twice in one run
};

/// Two texts that are told when a code for money was sent, and are handed back with it.
struct CodePair {
    std::string first; ///< 32 lower-case hexadecimal digits, like the second
    std::string second;
};

/// Every request names its `peer`, the other side's numeric address without a port ("192.0.2.7",
/// "2001:db8::1"; the one that a trusted proxy reports, where there is one). Limits count IPv6
/// addresses by their first 64 bits.
struct SignInRequest {
    std::string phone;
    Secret password;
    std::uint64_t client = 0; ///< the same for all sign-ins of one running client
    ActionKey key;
    std::string peer;
};

struct CodeRequest {
    CodePurpose purpose = CodePurpose::Register;
    std::string phone;
    AccountId account; ///< who asks, for Money; otherwise none
    ActionKey key;
    std::string peer;
    std::string market = {}; ///< for Money: the prefix of the only one that the code is good for
};

struct RegisterRequest {
    std::string referee; ///< a phone, or empty
    std::string phone;
    Secret password;
    Secret code;
    ActionKey key;
    std::string peer;
};

struct ResetRequest {
    std::string phone;
    Secret password; ///< the new one
    Secret code;
    ActionKey key;
    std::string peer;
};

/// Uses up a code that allows to move money.
struct MoneyCodeCheck {
    AccountId account;
    std::string phone; ///< the account's own where it is empty
    Secret code;
    ActionKey key;
    std::string peer;
    std::string market = {}; ///< as the code was sent for
    CodePair pair = {}; ///< that belongs to the code
    Fen amount = {}; ///< what is to be moved, which the key stands for
};

struct FavouriteChange {
    AccountId account;
    std::string market; ///< its prefix, such as "/lc/youbika/"
    CollectionId collection; ///< that it exists is the caller's to know
    bool add = true; ///< false removes; one that is added again goes to the end
    ActionKey key;
};

/// Counters since the start. Each is right by itself, they are not read as one.
struct AccountCounters {
    std::atomic<std::uint64_t> requests{0}; ///< answered, repetitions included
    std::atomic<std::uint64_t> turnedAway{0}; ///< told Busy
    std::atomic<std::uint64_t> signIns{0}; ///< that succeeded
    std::atomic<std::uint64_t> wrongPasswords{0};
    std::atomic<std::uint64_t> wrongCodes{0};
    std::atomic<std::uint64_t> refusedByLimit{0}; ///< TooOften, CodePause, CodeLimit, GuessLimit
    std::atomic<std::uint64_t> commits{0}; ///< that changed something
    std::atomic<std::uint64_t> texts{0}; ///< handed to the gateway
    std::atomic<std::uint64_t> textsFailed{0};
};

struct AccountDeskOptions {
    std::filesystem::path folder; ///< has to exist
    std::string platform; ///< "lc": names the file and stands in account numbers
    std::string platformName; ///< "岚川", for text messages; the id without it
    std::string vfs; ///< SQLite VFS of the file; "" is the usual one
    /// A file that is made now gets the demo account and is a demo for ever; one that is there
    /// stays what it is.
    bool demo = false;

    std::shared_ptr<Clock> clock; ///< the machine's without it
    std::shared_ptr<RandomSource> random; ///< libsodium's without it
    /// Without it one with two threads. Desks of one service share one, so that its bound counts.
    std::shared_ptr<PasswordPool> passwords;
    std::shared_ptr<TextGateway> texts; ///< an Outbox in the folder without it
    AccountLimits limits;

    /// Sessions ended: the numbers, each once. After the commit that ended them, before the answer
    /// of the request that did; session() tells the new state already. On the desk's thread: be
    /// short, never throw, never wait for the desk.
    std::function<void(const std::vector<std::int64_t> &sessions)> sessionsEnded;
    /// The desk ended by a fault, with the reason for the log: the process has to end, and to start
    /// again from its disk. On the desk's thread.
    std::function<void(const std::string &reason)> fatal;
    /// A line for the operator's log, without anything that a client sent.
    std::function<void(const std::string &line)> notice;
};

/**
 * All accounts and sessions of one platform, in one SQLite file.
 *
 * Requests wait in a bounded queue. One thread takes what is waiting, carries it out, makes all of
 * it durable with one commit and answers only then; passwords are hashed on a pool of their own.
 * A commit that fails ends the desk at once; nothing is tried again, and what it knew is read from
 * the disk at the next start.
 *
 * Every operation calls its `done` exactly once: on the desk's thread, or before it returns where
 * the request is malformed, the queue is full (Busy) or the desk has ended (Failed). A callback is
 * short, does not throw and does not wait for the desk. It may be empty.
 *
 * An action's key that was seen answers the first answer again and does nothing; other content
 * under it is KeyDiffers. Passwords and codes are no part of the content. Keys belong to the
 * account of a signed-in action; those of the others share one space.
 */
class AccountDesk
{
public:
    using Answered = std::function<void(const AccountAnswer &)>;

    /// Opens `<folder>/<platform>.accounts` or makes it, readable by its owner alone, and loads the
    /// sessions. Requests are taken from now on. Throws StoreError, or std::bad_alloc where the
    /// machine has no memory for a password's hash.
    explicit AccountDesk(AccountDeskOptions options);
    /// Stops cleanly if that was not done.
    ~AccountDesk();

    AccountDesk(const AccountDesk &) = delete;
    AccountDesk &operator=(const AccountDesk &) = delete;

    /// Takes no more requests, carries out and answers those that wait, sends the text messages
    /// that wait and ends the threads. Idempotent. Not from a callback.
    void stop();

    /// Done with token, session and profile; WrongPassword, TooOften.
    void signIn(SignInRequest request, Answered done);
    /// Done means no more than that the request was taken: the answer is the same whether the phone
    /// has an account or not. CodePause, CodeLimit, TooOften; for Money NotYourPhone as well.
    void sendCode(CodeRequest request, Answered done);
    /// Done; AlreadyRegistered, and what codes are refused with.
    void registerAccount(RegisterRequest request, Answered done);
    /// Done, and all sessions of the account are Ended; what codes are refused with.
    void resetPassword(ResetRequest request, Answered done);
    /// The pair of the code that was sent under this key, whenever it is asked for. From any
    /// thread.
    CodePair codePair(AccountId account, std::string_view market, ActionKey key) const;
    /// Done, and the code is used up; NotYourPhone, and what codes are refused with. A code is good
    /// for its account, its market and with its pair alone.
    void checkMoneyCode(MoneyCodeCheck request, Answered done);
    /// Done; TooManyFavourites, AccountUnknown.
    void changeFavourite(FavouriteChange request, Answered done);

    // One-time links. They have no keys: each is used up by what it does.

    /// Done with the link's token; TooOften, AccountUnknown, and CardBound for OpenAccount.
    void makeLink(LinkRequest request, Answered done);
    /// Done, and link() tells what was prepared; a repetition within the pause between two codes
    /// sends none. CardBound, what links and the sending of codes are refused with.
    void prepareCard(CardRequest request, Answered done);
    void prepareAmount(AmountRequest request, Answered done);
    /// Done; CodeMissing where nothing was prepared.
    void sendLinkCode(LinkCodeRequest request, Answered done);
    /// Done, and the link is used: the card is bound, or the money of link() is to be moved under
    /// its key now. CardBound, CardTaken, what links and codes are refused with.
    void confirmLink(LinkConfirmation request, Answered done);
    /// Done, and the link is live again under another key, with nothing prepared; LinkUnknown where
    /// it is not used under this one.
    void giveLinkBack(LinkReturn request, Answered done);

    /// The first answer of the key, once it is there; or KeyUnknown, and then the key is burnt: an
    /// action that is still on its way has no effect and is told the same. `account` is that of a
    /// signed-in action and none of the others. KeyDiffers where the key was used for another
    /// action; Busy where strangers burn more than the disk should be troubled with.
    void resolve(AccountAction action, ActionKey key, AccountId account, Answered done);

    /// The favourites of an account on one market. `page` from 1, `size` 1 to 1000; a page past the
    /// end is empty.
    void favourites(AccountId account, std::string market, std::int64_t page, std::int64_t size,
                    std::function<void(const FavouritesAnswer &)> done);
    void profile(AccountId account, std::function<void(const ProfileAnswer &)> done);

    /// What a token stands for now. From any thread; touches memory alone.
    SessionState session(std::string_view token) const;
    /// The bank card that is bound to an account, or nothing. From any thread; touches memory
    /// alone.
    std::optional<BankCard> cardOf(AccountId account) const;
    /// What a one-time link stands for now. From any thread; touches memory alone.
    LinkState link(std::string_view token) const;

    const std::string &platform() const;
    /// Whether the file was made as a demo.
    bool isDemo() const { return demoAccount().has_value(); }
    /// The account of the demo: phone 13800000000, password "demo888888".
    std::optional<AccountId> demoAccount() const;

    const AccountCounters &counters() const;
    /// Requests that wait for the desk's thread.
    std::size_t waiting() const;
    /// Sessions that were not ended; one that grew too old may still be among them.
    std::size_t liveSessions() const;
    /// Whether the desk ended by a fault.
    bool failed() const;

private:
    class Room;
    std::unique_ptr<Room> m_room;
};

} // namespace zvx
