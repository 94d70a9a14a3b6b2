#include "exchange/accounts/desk_bench.h"
#include "exchange/accounts/outbox.h"
#include "exchange/accounts/password_pool.h"

#include <sodium.h>

#include <filesystem>

namespace zvx {
namespace {

using test::DeskBench;
using test::Outcome;
using test::phone;

/// Everything that stands in the folder, the outbox excepted.
std::string bytesOf(const std::filesystem::path &folder)
{
    std::string all;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        if (entry.path().filename().string().rfind("outbox", 0) != 0)
            all += test::readFile(entry.path());
    return all;
}

TEST(SecretsOnDisk, NeitherPasswordNorTokenNorCodeIsThere)
{
    const std::string password = "Kanarienvogel-7351";
    const std::string next = "Wellensittich-8462";
    const std::string tried = "Nachtigall-95731";
    DeskBench bench([](AccountDeskOptions &options) {
        options.passwords = std::make_shared<PasswordPool>(
            std::make_shared<ArgonHasher>(ArgonCost::least()), 2, 8);
    });
    const AccountId account = bench.makeAccount(phone(1), password);
    std::vector<std::string> tokens;
    for (std::uint64_t client = 1; client <= 3; ++client)
        tokens.push_back(bench.signIn(phone(1), password, client).token);
    bench.signIn(phone(1), tried);
    bench.signIn(phone(2), tried);
    bench.pass(AccountLimits::kMinute);
    const std::string money = bench.codeFor(CodePurpose::Money, phone(1), account);
    const std::string reset = bench.codeFor(CodePurpose::Reset, phone(1));
    bench.reset(phone(1), tried, DeskBench::wrong(reset));
    ASSERT_EQ(bench.reset(phone(1), next, reset).status, AccountStatus::Done);
    const Outcome last = bench.signIn(phone(1), next);
    ASSERT_EQ(last.status, AccountStatus::Done);
    tokens.push_back(last.token);
    ASSERT_EQ(money.size(), 6u);

    const auto search = [&](const std::string &where, const std::string &all) {
        SCOPED_TRACE(where);
        // The search finds what is there.
        EXPECT_NE(all.find(phone(1)), std::string::npos);
        EXPECT_NE(all.find("$argon2id$"), std::string::npos);
        for (const std::string &secret : {password, next, tried, money}) {
            EXPECT_EQ(all.find(secret), std::string::npos) << secret;
            // Nor half of one.
            EXPECT_EQ(all.find(secret.substr(0, 10)), std::string::npos) << secret;
        }
        for (const std::string &token : tokens) {
            EXPECT_EQ(all.find(token), std::string::npos);
            unsigned char bytes[32];
            ASSERT_EQ(sodium_base642bin(bytes, sizeof bytes, token.data(), token.size(), nullptr,
                                        nullptr, nullptr, sodium_base64_VARIANT_URLSAFE_NO_PADDING),
                      0);
            EXPECT_EQ(all.find(std::string(reinterpret_cast<char *>(bytes), sizeof bytes)),
                      std::string::npos);
        }
    };
    search("while it is open", bytesOf(bench.folder()));
    bench.desk().stop();
    for (const std::string &line : bench.notices())
        ADD_FAILURE() << line;
    bench.close();
    search("closed", bytesOf(bench.folder()));
}

TEST(SecretsOnDisk, NeitherCardNumberNorLinkNorItsCodeIsThere)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1));
    bench.pass(AccountLimits::kMinute);
    std::vector<std::string> secrets = {test::kCard, test::kOtherCard};
    const std::string link = bench.makeLink(LinkPurpose::OpenAccount, account).token;
    secrets.push_back(link);
    ASSERT_EQ(bench.prepareCard(link, test::kOtherCard).status, AccountStatus::Done);
    secrets.push_back(bench.newestCode(2));
    bench.clock->advance(AccountLimits::kMinute);
    ASSERT_EQ(bench.prepareCard(link).status, AccountStatus::Done);
    secrets.push_back(bench.newestCode(3));
    ASSERT_EQ(bench.confirmLink(link, secrets.back()).status, AccountStatus::Done);
    const std::string money = bench.makeLink(LinkPurpose::MoneyIn, account).token;
    secrets.push_back(money);
    ASSERT_EQ(bench.prepareAmount(money, 100).status, AccountStatus::CodePause);

    const auto search = [&](const std::string &all) {
        EXPECT_NE(all.find("林晓月"), std::string::npos);
        EXPECT_NE(all.find("0121"), std::string::npos);
        for (const std::string &secret : secrets) {
            EXPECT_EQ(all.find(secret), std::string::npos) << secret;
            // Nor a part of a long one; the tail of a card is kept.
            if (secret.size() > 10) {
                EXPECT_EQ(all.find(secret.substr(2, 8)), std::string::npos) << secret;
            }
        }
    };
    search(bytesOf(bench.folder()));
    bench.close();
    search(bytesOf(bench.folder()));
}

TEST(SecretsOnDisk, TheOutboxIsTheOnePlaceForCodes)
{
    DeskBench bench([](AccountDeskOptions &options) {
        options.texts = std::make_shared<Outbox>(options.folder, options.clock);
    });
    ASSERT_EQ(bench.sendCode(CodePurpose::Register, phone(1)).status, AccountStatus::Done);
    bench.desk().stop();
    const std::string outbox = test::readFile(bench.folder() / "outbox.txt");
    const std::size_t text = outbox.find("\t" + phone(1) + "\t");
    ASSERT_NE(text, std::string::npos);
    EXPECT_EQ(test::codeIn(outbox.substr(text + 13)).size(), 4u);
}

TEST(SecretsOnDisk, AreNotInWhatAFailureSays)
{
    DeskBench bench([](AccountDeskOptions &options) {
        options.texts = std::make_shared<Outbox>(options.folder / "missing", options.clock);
    });
    ASSERT_EQ(bench.sendCode(CodePurpose::Register, phone(1)).status, AccountStatus::Done);
    bench.desk().stop();
    ASSERT_EQ(bench.notices().size(), 1u);
    const std::string line = bench.notices().front();
    EXPECT_NE(line.find("outbox.txt"), std::string::npos) << line;
    EXPECT_EQ(line.find("验证码"), std::string::npos) << line;
    EXPECT_EQ(line.find(phone(1)), std::string::npos) << line;
}

} // namespace
} // namespace zvx
