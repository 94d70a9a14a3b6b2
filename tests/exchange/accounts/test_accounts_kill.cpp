#include "exchange/accounts/account_file.h"
#include "exchange/accounts/desk_bench.h"
#include "exchange/accounts/password_pool.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace zvx {
namespace {

using test::kHere;
using test::phone;

constexpr const char *kMarket = "/lc/youbika/";

/// What the process that gets killed reports of each answer.
struct Acknowledged {
    std::int64_t account; ///< the key's
    ActionKey key;
    AccountStatus status;
};

/// The process that gets killed: burns keys, and adds favourites under others, as fast as it can.
[[noreturn]] void workForEver(const std::filesystem::path &folder, std::uint64_t round, int report)
{
    AccountDeskOptions options;
    options.folder = folder;
    options.platform = "lc";
    options.demo = true;
    options.limits.burntAtOnce = 1'000'000;
    options.passwords = std::make_shared<PasswordPool>(std::make_shared<test::FakeHasher>());
    options.texts = std::make_shared<test::FakeTexts>();
    AccountDesk desk(std::move(options));
    const AccountId account = desk.demoAccount().value();
    for (std::uint64_t i = 1;; ++i) {
        const ActionKey key{round + 1, i};
        const bool burns = i % 2 == 0;
        const auto answered = [=](const AccountAnswer &answer) {
            const Acknowledged line{burns ? 0 : account.value(), key, answer.status};
            if (answer.status != AccountStatus::Busy
                && ::write(report, &line, sizeof line) != sizeof line)
                ::_exit(1);
        };
        if (burns)
            desk.resolve(AccountAction::SignIn, key, {}, answered);
        else
            desk.changeFavourite(
                {account, kMarket, CollectionId(static_cast<std::int64_t>(i % 500 + 1)), true, key},
                answered);
        if (desk.waiting() > 200)
            ::usleep(1'000);
    }
}

/// The process dies while it works, at a place that nobody chose; what it answered must be there.
TEST(AccountsKill, AnswersOfKeysAndBurntKeysOutliveTenKills)
{
    const test::TempFolder folder;
    std::mt19937 random(10);
    std::vector<Acknowledged> all;
    for (std::uint64_t round = 0; round < 10; ++round) {
        int report[2];
        ASSERT_EQ(::pipe(report), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(report[0]);
            workForEver(folder.path(), round, report[1]);
        }
        ::close(report[1]);
        const unsigned wanted = 1 + random() % 300;
        unsigned seen = 0;
        Acknowledged line{};
        // Killed after some answers; those that were on their way are read afterwards.
        while (::read(report[0], &line, sizeof line) == static_cast<ssize_t>(sizeof line)) {
            all.push_back(line);
            if (++seen == wanted)
                ::kill(child, SIGKILL);
        }
        ::close(report[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "round " << round;
        ASSERT_GE(seen, wanted);

        AccountFile file(folder / "lc.accounts", {}, AccountFile::kLogFrames);
        file.change([&] {
            for (const Acknowledged &entry : all) {
                const auto stored = file.answer({AccountId(entry.account), entry.key});
                ASSERT_TRUE(stored) << "round " << round << " lost an answer";
                ASSERT_EQ(stored->status, entry.status);
            }
        });
    }
    EXPECT_GT(all.size(), 500u);
}

} // namespace
} // namespace zvx
