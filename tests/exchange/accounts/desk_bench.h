#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/accounts/password_hasher.h"
#include "exchange/accounts/random_source.h"
#include "exchange/accounts/text_gateway.h"
#include "exchange/store/clock.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace zvx {

void PrintTo(AccountStatus status, std::ostream *out);

} // namespace zvx

namespace zvx::test {

constexpr const char *kHere = "192.0.2.1"; ///< where honest users sit
constexpr const char *kElsewhere = "198.51.100.7";

// Card numbers whose last digit fits, of no bank's.
constexpr const char *kCard = "9990001234567890121";
constexpr const char *kOtherCard = "9990005555666678";

/// The same numbers for the same seed.
class SeededRandom : public RandomSource
{
public:
    explicit SeededRandom(std::uint32_t seed) : m_random(seed) { }
    void fill(void *to, std::size_t size) override;

private:
    std::mt19937 m_random;
};

/// Hashes nothing, counts everything, and can be held or be out of memory.
class FakeHasher : public PasswordHasher
{
public:
    std::string hash(std::string_view password) override;
    bool verify(const std::string &stored, std::string_view password) override;

    std::atomic<int> hashes{0};
    std::atomic<int> verifications{0};
    std::atomic<bool> outOfMemory{false};
    /// Called in each hash() and verify(), on the pool's thread.
    std::function<void()> meanwhile;
};

/// Keeps the texts that a gateway would send.
class FakeTexts : public TextGateway
{
public:
    struct Text {
        std::string phone;
        std::string text;
    };
    void send(std::string_view phone, std::string_view text) override;

    /// Waits until there are so many texts, and returns them all.
    std::vector<Text> texts(std::size_t atLeast = 0);

    std::atomic<bool> broken{false};
    /// Called in each send().
    std::function<void()> meanwhile;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Text> m_texts;
};

/// The digits of a text, or "" where it has none.
std::string codeIn(const std::string &text);

/// An answer that can be kept and compared.
struct Outcome {
    AccountStatus status = AccountStatus::Failed;
    std::int64_t wait = 0;
    std::string token;
    std::int64_t session = 0;
    AccountProfile profile = {};
};
Outcome outcomeOf(const AccountAnswer &answer);

using Pending = std::future<Outcome>;

/// Waits for an answer, and fails the test where none comes.
Outcome await(Pending &pending);

/// A desk with everything around it that a test wants to hold: time, chance, texts, hashing. Each
/// question is watched: its callback has to be called exactly once.
class DeskBench
{
public:
    using Adjust = std::function<void(AccountDeskOptions &)>;

    explicit DeskBench(Adjust adjust = {});
    ~DeskBench();

    /// Ends the desk and opens it again on the same file.
    void reopen();
    void close();

    AccountDesk &desk() { return *m_desk; }
    std::filesystem::path file() const { return m_folder / "lc.accounts"; }
    const std::filesystem::path &folder() const { return m_folder.path(); }

    ActionKey newKey() { return {7, ++m_keys}; }

    Pending signInLater(const std::string &phone, const std::string &password,
                        std::uint64_t client = 1, const std::string &peer = kHere,
                        ActionKey key = {});
    Outcome signIn(const std::string &phone, const std::string &password, std::uint64_t client = 1,
                   const std::string &peer = kHere, ActionKey key = {});
    Pending sendCodeLater(CodePurpose purpose, const std::string &phone, AccountId account = {},
                          const std::string &peer = kHere, ActionKey key = {});
    Outcome sendCode(CodePurpose purpose, const std::string &phone, AccountId account = {},
                     const std::string &peer = kHere, ActionKey key = {});
    Pending registerLater(const std::string &phone, const std::string &password,
                          const std::string &code, const std::string &referee = {},
                          const std::string &peer = kHere, ActionKey key = {});
    Outcome registerAccount(const std::string &phone, const std::string &password,
                            const std::string &code, const std::string &referee = {},
                            const std::string &peer = kHere, ActionKey key = {});
    Pending resetLater(const std::string &phone, const std::string &password,
                       const std::string &code, const std::string &peer = kHere,
                       ActionKey key = {});
    Outcome reset(const std::string &phone, const std::string &password, const std::string &code,
                  const std::string &peer = kHere, ActionKey key = {});
    Outcome checkMoney(AccountId account, const std::string &phone, const std::string &code,
                       const std::string &peer = kHere, ActionKey key = {});
    Pending favouriteLater(AccountId account, std::int64_t collection, bool add = true,
                           const std::string &market = "/lc/youbika/", ActionKey key = {});
    Outcome favourite(AccountId account, std::int64_t collection, bool add = true,
                      const std::string &market = "/lc/youbika/", ActionKey key = {});
    Pending resolveLater(AccountAction action, ActionKey key, AccountId account = {});
    Outcome resolve(AccountAction action, ActionKey key, AccountId account = {});
    Outcome makeLink(LinkPurpose purpose, AccountId account,
                     const std::string &market = "/lc/youbika/");
    Outcome prepareCard(const std::string &link, const std::string &number = kCard,
                        const std::string &holder = "林晓月", const std::string &bank = "lanchuan",
                        const std::string &peer = kHere);
    Outcome prepareAmount(const std::string &link, std::int64_t fen,
                          const std::string &peer = kHere);
    Outcome sendLinkCode(const std::string &link, const std::string &peer = kHere);
    Outcome confirmLink(const std::string &link, const std::string &code = {},
                        const std::string &peer = kHere);
    Outcome giveLinkBack(const std::string &link, ActionKey key);

    std::vector<std::int64_t> favourites(AccountId account, std::int64_t page = 1,
                                         std::int64_t size = 100,
                                         const std::string &market = "/lc/youbika/");
    ProfileAnswer profile(AccountId account);

    /// Has a code sent and returns the one in the text.
    std::string codeFor(CodePurpose purpose, const std::string &phone, AccountId account = {});
    /// What is in the newest of so many texts.
    std::string newestCode(std::size_t count) { return codeIn(texts->texts(count).back().text); }
    /// Binds a card by a link of its own.
    void bindCard(AccountId account, const std::string &number = kCard);
    /// A code of as many digits that is another one.
    static std::string wrong(const std::string &code);
    /// Registers and returns the account.
    AccountId makeAccount(const std::string &phone, const std::string &password = "correct-1");

    SessionState::Kind kind(const std::string &token) { return desk().session(token).kind; }

    /// Waits until everything that was asked before is answered.
    void settle();
    /// Moves the clock and waits until the desk has tidied up.
    void pass(std::int64_t milliseconds);

    std::vector<std::int64_t> ended(); ///< sessions that were told to have ended, in order
    std::vector<std::string> notices();
    std::vector<std::string> fatals();

    const std::shared_ptr<ManualClock> clock;
    const std::shared_ptr<FakeHasher> hasher;
    const std::shared_ptr<FakeTexts> texts;

private:
    AccountDesk::Answered watch(Pending &pending);
    std::map<std::int64_t, ActionKey> m_codeKeys; ///< of the newest codes, by account
    ActionKey keyOr(ActionKey key) { return key.isNull() ? newKey() : key; }
    void open();

    TempFolder m_folder;
    Adjust m_adjust;
    std::shared_ptr<SeededRandom> m_random;
    std::uint64_t m_keys = 0;
    std::atomic<int> m_asked{0};
    std::atomic<int> m_answered{0};
    std::mutex m_mutex;
    std::vector<std::int64_t> m_ended;
    std::vector<std::string> m_notices;
    std::vector<std::string> m_fatals;
    std::unique_ptr<AccountDesk> m_desk;
};

/// "13900000007" for 7
std::string phone(int number);

} // namespace zvx::test
