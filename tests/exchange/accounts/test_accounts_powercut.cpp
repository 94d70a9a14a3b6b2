#include "exchange/accounts/account_file.h"
#include "exchange/accounts/account_rules.h"
#include "exchange/accounts/code_book.h"
#include "exchange/accounts/desk_bench.h"
#include "exchange/accounts/password_pool.h"
#include "exchange/accounts/session_book.h"
#include "exchange/store/powercutdisk.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>

namespace zvx {
namespace {

using test::await;
using test::Outcome;
using test::Pending;
using test::phone;
using test::PowerCutDisk;

constexpr int kPhones = 6;
constexpr int kCutsOfAFile = 20;
constexpr const char *kMarket = "/lc/youbika/";

struct Tally {
    int cuts = 0;
    int cutsInOpening = 0;
    std::vector<std::string> lost; ///< answered things that were gone, or told otherwise
    int usedCodesSeen = 0; ///< codes that were still there to be seen as used
    int damaged = 0; ///< files that could not be opened any more
    std::uint64_t answered = 0;
};

struct UsedCode {
    CodePurpose purpose;
    std::string code;
    TimeMs issued; ///< another one may have the same digits
};

/// What one phone's owner was told, and so may rely on.
struct Told {
    bool registered = false;
    std::set<std::string> passwords; ///< one of them holds: the last one told, or one in doubt
    std::map<std::string, bool> tokens; ///< and whether they were told as ended
    std::map<std::int64_t, bool> favourites; ///< of those whose last change was told
    std::map<std::int64_t, int> wrongGuesses; ///< by day
    std::vector<UsedCode> usedCodes;
    std::vector<std::pair<KeyName, AccountStatus>> answers;
    AccountId account;
};

/// One step of a phone's life: what was asked, and what is to be noted when it was answered.
struct Step {
    Pending pending;
    std::function<void(const Outcome &)> note;
};

/// Lets some people register, forget passwords and mistype codes on a disk whose power fails.
class Lives
{
public:
    Lives(PowerCutDisk &disk, std::uint32_t seed)
        : m_disk(disk), m_random(seed), m_chance(std::make_shared<test::SeededRandom>(seed)),
          m_clock(std::make_shared<ManualClock>(test::kMorning)),
          m_texts(std::make_shared<test::FakeTexts>()),
          m_passwords(std::make_shared<PasswordPool>(std::make_shared<test::FakeHasher>()))
    {
    }

    Tally live(int cuts);

private:
    AccountDeskOptions options() const;
    void run(AccountDesk &desk, Tally &tally);
    Step step(AccountDesk &desk, int number);
    Step ask(const std::function<void(AccountDesk::Answered)> &question,
             std::function<void(const Outcome &)> note);
    void verify(Tally &tally);
    /// Whether a code that was used up could be used once more; counts those that could not.
    bool isRightAgain(AccountFile &file, int &seen);
    ActionKey newKey() { return {m_random() | 1u, ++m_keys}; }

    PowerCutDisk &m_disk;
    std::mt19937 m_random;
    std::shared_ptr<test::SeededRandom> m_chance;
    std::shared_ptr<ManualClock> m_clock;
    std::shared_ptr<test::FakeTexts> m_texts;
    std::shared_ptr<PasswordPool> m_passwords;
    std::uint64_t m_keys = 0;
    std::map<int, Told> m_told;
    std::map<int, std::string> m_codes; ///< the newest code that a phone was told of and not used
    std::map<int, TimeMs> m_issued; ///< and when
};

AccountDeskOptions Lives::options() const
{
    AccountDeskOptions options;
    options.platform = "lc";
    options.vfs = m_disk.name();
    options.clock = m_clock;
    options.random = m_chance;
    options.texts = m_texts;
    options.passwords = m_passwords;
    options.limits.codesOfDay = 1'000'000;
    options.limits.guessesOfPeer = 1'000'000;
    options.limits.guessesOfPhone = 1'000'000;
    options.limits.textsOfPeer = 1'000'000;
    return options;
}

Step Lives::ask(const std::function<void(AccountDesk::Answered)> &question,
                std::function<void(const Outcome &)> note)
{
    const auto promise = std::make_shared<std::promise<Outcome>>();
    Step step{promise->get_future(), std::move(note)};
    question(
        [promise](const AccountAnswer &answer) { promise->set_value(test::outcomeOf(answer)); });
    return step;
}

Step Lives::step(AccountDesk &desk, int number)
{
    Told &told = m_told[number];
    const std::string own = phone(number);
    const ActionKey key = newKey();
    const KeyName free{{}, key};
    const auto keep = [&told](const KeyName &name, const Outcome &answer) {
        told.answers.emplace_back(name, answer.status);
    };
    const CodePurpose purpose = told.registered ? CodePurpose::Reset : CodePurpose::Register;
    const std::string code = m_codes[number];
    const std::int64_t day = exchangeDay(m_clock->wall());

    if (code.empty() && (!told.registered || m_random() % 3 == 0)) {
        return ask(
            [&](AccountDesk::Answered done) {
                desk.sendCode({purpose, own, {}, key, test::kHere}, std::move(done));
            },
            [this, number, keep, free](const Outcome &answer) {
                if (answer.status != AccountStatus::Done)
                    return;
                keep(free, answer);
                m_codes[number] = "sent";
                m_issued[number] = m_clock->wall(); // stands still while a round lasts
            });
    }
    if (!code.empty() && m_random() % 3 == 0) {
        const std::string wrong = test::DeskBench::wrong(code);
        return ask(
            [&](AccountDesk::Answered done) {
                if (purpose == CodePurpose::Reset)
                    desk.resetPassword({own, Secret("guess-1"), Secret(wrong), key, test::kHere},
                                       std::move(done));
                else
                    desk.registerAccount(
                        {{}, own, Secret("guess-1"), Secret(wrong), key, test::kHere},
                        std::move(done));
            },
            [&told, keep, free, day](const Outcome &answer) {
                if (answer.status != AccountStatus::CodeWrong)
                    return;
                keep(free, answer);
                ++told.wrongGuesses[day];
            });
    }
    if (!code.empty()) {
        const std::string password = "pass-" + std::to_string(m_random());
        told.passwords.insert(password); // in doubt until it is told
        m_codes[number].clear();
        return ask(
            [&](AccountDesk::Answered done) {
                if (purpose == CodePurpose::Reset)
                    desk.resetPassword({own, Secret(password), Secret(code), key, test::kHere},
                                       std::move(done));
                else
                    desk.registerAccount(
                        {{}, own, Secret(password), Secret(code), key, test::kHere},
                        std::move(done));
            },
            [&told, keep, free, password,
             used = UsedCode{purpose, code, m_issued[number]}](const Outcome &answer) {
                if (answer.status != AccountStatus::Done) {
                    told.passwords.erase(password);
                    return;
                }
                keep(free, answer);
                told.registered = true;
                told.passwords = {password};
                told.usedCodes.push_back(used);
                for (auto &[token, over] : told.tokens)
                    over = true;
            });
    }
    if (told.account == AccountId() || m_random() % 3 == 0) {
        return ask(
            [&](AccountDesk::Answered done) {
                desk.signIn({own, Secret(*told.passwords.rbegin()), m_random(), key, test::kHere},
                            std::move(done));
            },
            [&told](const Outcome &answer) {
                if (answer.status != AccountStatus::Done)
                    return;
                told.account = answer.profile.id;
                for (auto &[token, over] : told.tokens)
                    over = true;
                told.tokens[answer.token] = false;
            });
    }
    const std::int64_t collection = m_random() % 4 + 1;
    const bool add = m_random() % 3 != 0;
    told.favourites.erase(collection); // in doubt until it is told
    return ask(
        [&](AccountDesk::Answered done) {
            desk.changeFavourite({told.account, kMarket, CollectionId(collection), add, key},
                                 std::move(done));
        },
        [&told, keep, key, collection, add](const Outcome &answer) {
            if (answer.status != AccountStatus::Done)
                return;
            keep({told.account, key}, answer);
            told.favourites[collection] = add;
        });
}

void Lives::run(AccountDesk &desk, Tally &tally)
{
    while (!desk.failed()) {
        m_clock->advance(61'000);
        const std::size_t texts = m_texts->texts().size();
        std::vector<Step> steps;
        for (int number = 0; number < kPhones; ++number)
            steps.push_back(step(desk, number));
        std::size_t sent = 0;
        for (Step &one : steps) {
            const Outcome answer = await(one.pending);
            if (answer.status == AccountStatus::Failed)
                continue;
            ++tally.answered;
            one.note(answer);
        }
        for (auto &[number, code] : m_codes)
            sent += code == "sent" ? 1 : 0;
        // Each code that was told is in a text; the texts of a round come in any order.
        if (sent > 0) {
            const auto all = m_texts->texts(texts + sent);
            for (std::size_t i = texts; i < all.size(); ++i)
                for (auto &[number, code] : m_codes)
                    if (code == "sent" && all[i].phone == phone(number))
                        code = test::codeIn(all[i].text);
        }
    }
}

void Lives::verify(Tally &tally)
{
    AccountFile file("lc.accounts", m_disk.name(), AccountFile::kLogFrames);
    const auto missing = [&](bool is, const char *what) {
        if (is)
            tally.lost.push_back("cut " + std::to_string(tally.cuts) + ": " + what);
    };
    std::map<std::string, SessionState::Kind> kinds;
    for (const StoredSession &session : file.sessions())
        kinds[session.token] = session.kind;
    file.change([&] {
        for (auto &[number, told] : m_told) {
            const auto account = file.accountOf(phone(number));
            missing(told.registered && !account, "an account");
            if (account) {
                const bool knownPassword = account->password.rfind("fake:", 0) == 0
                    && told.passwords.count(account->password.substr(5)) > 0;
                missing(!knownPassword, "a password");
                // What was in doubt is known now.
                told.registered = true;
                told.passwords = {account->password.substr(5)};
            } else {
                told.registered = false;
                told.passwords.clear();
            }
            for (const auto &[token, over] : told.tokens) {
                const auto found = kinds.find(SessionBook::hashOf(token));
                missing(found == kinds.end(), "a session");
                missing(over && found != kinds.end() && found->second == SessionState::Live,
                        "the end of a session");
            }
            const auto favourites = file.favourites(told.account, kMarket, 0, 100);
            for (const auto &[collection, there] : told.favourites)
                missing(
                    (std::count(favourites.begin(), favourites.end(), CollectionId(collection)) > 0)
                        != there,
                    "a favourite");
            const std::int64_t today = exchangeDay(m_clock->wall());
            for (const auto &[day, guesses] : told.wrongGuesses)
                missing(day >= today - 1 && file.guesses(phone(number), day) < guesses,
                        "a wrong guess");
            for (const auto &[name, status] : told.answers) {
                const auto stored = file.answer(name);
                missing(!stored || stored->status != status, "the answer of a key");
            }
        }
    });
    missing(isRightAgain(file, tally.usedCodesSeen), "that a code was used");
    // A code that was on its way when the power went is asked for again.
    for (auto &[number, code] : m_codes)
        code.clear();
}

bool Lives::isRightAgain(AccountFile &file, int &seen)
{
    // To check a code leaves traces, so all of it is taken back in the end.
    struct TakenBack {
    };
    int right = 0;
    try {
        file.change([&] {
            const AccountLimits limits = options().limits;
            // A file whose making was cut off has none, and nobody was told anything.
            CodeBook codes(file, *m_chance, file.meta("secret").value_or(""), limits);
            for (const auto &[number, told] : m_told) {
                for (const UsedCode &used : told.usedCodes) {
                    const auto newest = file.code(used.purpose, phone(number));
                    if (!newest || newest->issued != used.issued)
                        continue; // forgotten with its day, or followed by another
                    const auto checked = codes.check({used.purpose, phone(number)}, used.code,
                                                     test::kHere, used.issued);
                    seen += checked.status == AccountStatus::CodeUsed ? 1 : 0;
                    right += checked.status == AccountStatus::Done ? 1 : 0;
                }
            }
            throw TakenBack();
        });
    } catch (const TakenBack &) {
    }
    return right > 0;
}

Tally Lives::live(int cuts)
{
    Tally tally;
    while (tally.cuts < cuts) {
        if (tally.cuts % kCutsOfAFile == 0) {
            m_disk.erase();
            m_told.clear();
            m_codes.clear();
        }
        // Some cuts hit the opening itself.
        m_disk.cutAfter(m_random() % 10 == 0 ? m_random() % 12 : 12 + m_random() % 300);
        std::unique_ptr<AccountDesk> desk;
        try {
            desk = std::make_unique<AccountDesk>(options());
        } catch (const std::exception &) {
            if (!m_disk.isOff()) {
                ++tally.damaged;
                return tally;
            }
            ++tally.cutsInOpening;
        }
        if (desk)
            run(*desk, tally);
        desk.reset();
        m_disk.powerOn();
        ++tally.cuts;
        try {
            verify(tally);
        } catch (const std::exception &) {
            ++tally.damaged;
            return tally;
        }
    }
    return tally;
}

/// The environment variables ZVX_CUTS and ZVX_SEED make it longer and another one.
TEST(AccountsPowerCut, WhatWasAnsweredIsThere)
{
    const char *cuts = std::getenv("ZVX_CUTS");
    const char *seed = std::getenv("ZVX_SEED");
    const int wanted = cuts ? std::atoi(cuts) : 300;
    const auto start = static_cast<std::uint32_t>(seed ? std::atoi(seed) : 1);
    PowerCutDisk disk(start);
    const Tally tally = Lives(disk, start).live(wanted);
    std::printf("seed %u: %d cuts, %d of them while opening, %llu answers, %llu sectors lost; "
                "repeat with ZVX_SEED=%u ZVX_CUTS=%d\n",
                start, tally.cuts, tally.cutsInOpening,
                static_cast<unsigned long long>(tally.answered),
                static_cast<unsigned long long>(disk.lostSectors()), start, wanted);
    EXPECT_EQ(tally.cuts, wanted);
    EXPECT_GT(tally.cutsInOpening, 0);
    EXPECT_GT(tally.answered, static_cast<std::uint64_t>(wanted));
    EXPECT_GT(disk.lostSectors(), 0u);
    EXPECT_GT(tally.usedCodesSeen, 0);
    EXPECT_EQ(tally.lost, std::vector<std::string>());
    EXPECT_EQ(tally.damaged, 0);
}

/// The same check on disks that do not keep their word: it has to see that.
TEST(AccountsPowerCut, SeesADiskThatDoesNotSync)
{
    for (const char *ending : {"-wal", ""}) {
        SCOPED_TRACE(ending);
        PowerCutDisk disk(3);
        disk.lieAboutSyncs(ending);
        const Tally tally = Lives(disk, 3).live(20);
        EXPECT_TRUE(!tally.lost.empty() || tally.damaged > 0);
    }
}

} // namespace
} // namespace zvx
