#include "exchange/accounts/outbox.h"
#include "exchange/accounts/text_gateway.h"
#include "exchange/service/embedded_bank.h"
#include "exchange/store/clock.h"

#include "exchange/service/temporary_folder.h"
#include "exchange/service/tight_files.h"
#include "exchange/service/until.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace zvx;
using zvxtest::until;

/// Keeps what a bank said, from any thread.
class Ear
{
public:
    BankGateway::Answered listener()
    {
        return [this](BankWord word) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_words.push_back(word);
        };
    }
    std::vector<BankWord> words() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_words;
    }
    bool hears(std::size_t count) const
    {
        return until([&] { return words().size() >= count; });
    }

private:
    mutable std::mutex m_mutex;
    std::vector<BankWord> m_words;
};

class EmbeddedBankTest : public testing::Test
{
protected:
    EmbeddedBankTest() { options.folder = folder.path(); }

    void begin() { bank = std::make_unique<EmbeddedBank>(options); }
    static BankOrder order(std::uint64_t id, bool incoming = true, std::int64_t fen = 12'345)
    {
        return {TransferId{7, id}, incoming, Fen(fen),
                BankCard{"bank", "赵一", "6789", "0123456789abcdef0123456789abcdef"}};
    }
    BankWord ask(const BankOrder &wanted)
    {
        Ear ear;
        bank->ask(wanted, ear.listener());
        EXPECT_TRUE(ear.hears(1));
        const auto words = ear.words();
        return words.empty() ? BankWord::Refused : words.front();
    }
    std::string textOf(const char *name) const
    {
        std::ifstream in(folder.path() / name, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }
    static std::size_t lines(const std::string &text)
    {
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }

    zvxtest::TemporaryFolder folder;
    EmbeddedBankOptions options;
    std::unique_ptr<EmbeddedBank> bank;
};

TEST_F(EmbeddedBankTest, SettlesAtOnceAndSaysSoInTheOutbox)
{
    begin();
    EXPECT_EQ(ask(order(1)), BankWord::Done);
    EXPECT_EQ(ask(order(2, false)), BankWord::Done);
    bank.reset();
    const std::string outbox = textOf(Outbox::kFileName);
    EXPECT_NE(outbox.find("\tbank\t转入123.45元，卡号尾号6789，已完成，编号"
                          "00000000000000070000000000000001\n"),
              std::string::npos)
        << outbox;
    EXPECT_NE(outbox.find("\tbank\t转出123.45元，卡号尾号6789，已完成，编号"
                          "00000000000000070000000000000002\n"),
              std::string::npos)
        << outbox;
    for (const std::string &text : {outbox, textOf(EmbeddedBank::kFileName)}) {
        EXPECT_EQ(lines(text), 2u);
        EXPECT_EQ(text.find("0123456789abcdef"), std::string::npos);
        EXPECT_EQ(text.find("赵一"), std::string::npos);
    }
    const auto mode
        = std::filesystem::status(folder.path() / EmbeddedBank::kFileName).permissions();
    EXPECT_EQ(mode, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(EmbeddedBankTest, RefusesTheWayThatItIsToldTo)
{
    const struct {
        BankRefusal refusal;
        BankWord in;
        BankWord out;
    } table[] = {{BankRefusal::None, BankWord::Done, BankWord::Done},
                 {BankRefusal::In, BankWord::Refused, BankWord::Done},
                 {BankRefusal::Out, BankWord::Done, BankWord::Refused},
                 {BankRefusal::All, BankWord::Refused, BankWord::Refused}};
    std::uint64_t id = 0;
    for (const auto &row : table) {
        options.refusal = row.refusal;
        begin();
        EXPECT_EQ(ask(order(++id, true)), row.in);
        EXPECT_EQ(ask(order(++id, false)), row.out);
        bank.reset();
    }
    EXPECT_NE(textOf(Outbox::kFileName).find("已拒绝"), std::string::npos);
}

TEST_F(EmbeddedBankTest, OneIdHasOneWordWhateverItIsToldLater)
{
    begin();
    EXPECT_EQ(ask(order(1)), BankWord::Done);
    EXPECT_EQ(ask(order(1)), BankWord::Done);
    options.refusal = BankRefusal::All;
    begin();
    EXPECT_EQ(ask(order(1)), BankWord::Done);
    EXPECT_EQ(ask(order(2)), BankWord::Refused);
    options.refusal = BankRefusal::None;
    begin();
    EXPECT_EQ(ask(order(2)), BankWord::Refused);
    EXPECT_EQ(lines(textOf(EmbeddedBank::kFileName)), 2u);
    EXPECT_EQ(lines(textOf(Outbox::kFileName)), 2u) << "what was done once is told once";
}

TEST_F(EmbeddedBankTest, WithoutACardItOnlyTellsWhatItDid)
{
    begin();
    EXPECT_EQ(ask(order(1)), BankWord::Done);
    BankOrder question = order(1);
    question.card.reset();
    EXPECT_EQ(ask(question), BankWord::Done);
    question.id = {7, 2};
    EXPECT_EQ(ask(question), BankWord::Refused);
    EXPECT_EQ(ask(order(2)), BankWord::Refused) << "and it will not be done later";
}

TEST_F(EmbeddedBankTest, TakesItsTimeAndForgetsWhatItDidNotAnswer)
{
    const auto clock = std::make_shared<ManualClock>(TimeMs(1'577'840'400'000));
    options.clock = clock;
    options.delay = 5'000;
    begin();
    Ear first;
    Ear second;
    Ear other;
    bank->ask(order(1), first.listener());
    bank->ask(order(1), second.listener());
    clock->advance(1);
    bank->ask(order(2), other.listener());
    clock->advance(4'998);
    EXPECT_TRUE(first.words().empty() && second.words().empty());
    clock->advance(1);
    EXPECT_TRUE(second.hears(1));
    EXPECT_TRUE(other.words().empty());
    clock->advance(1);
    EXPECT_TRUE(other.hears(1));
    EXPECT_EQ(second.words().size(), 1u);
    EXPECT_TRUE(first.words().empty()) << "who asked again is who is told";

    Ear never;
    bank->ask(order(3), never.listener());
    bank.reset();
    EXPECT_TRUE(never.words().empty());
    EXPECT_EQ(textOf(EmbeddedBank::kFileName).find("0000000000000003 "), std::string::npos);
}

TEST_F(EmbeddedBankTest, AHalfLineIsNoWordAndADamagedOneIsRefused)
{
    begin();
    EXPECT_EQ(ask(order(1)), BankWord::Done);
    bank.reset();
    {
        std::ofstream out(folder.path() / EmbeddedBank::kFileName, std::ios::app);
        out << "00000000000000070000000000000002 in 12345 do";
    }
    options.refusal = BankRefusal::All;
    begin();
    EXPECT_EQ(ask(order(2)), BankWord::Refused) << "nobody had heard it";
    EXPECT_EQ(ask(order(1)), BankWord::Done);
    bank.reset();
    EXPECT_EQ(lines(textOf(EmbeddedBank::kFileName)), 2u);
    {
        std::ofstream out(folder.path() / EmbeddedBank::kFileName, std::ios::app);
        out << "nonsense\n";
    }
    EXPECT_THROW(begin(), std::runtime_error);
}

TEST_F(EmbeddedBankTest, IsSilentWhereItCannotWriteItsLedger)
{
    std::mutex mutex;
    std::vector<std::string> notices;
    options.notice = [&](const std::string &line) {
        const std::lock_guard<std::mutex> lock(mutex);
        notices.push_back(line);
    };
    const auto noticed = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return notices.size();
    };
    struct Broken : TextGateway {
        void send(std::string_view, std::string_view) override
        {
            throw std::runtime_error("no outbox");
        }
    };
    options.outbox = std::make_shared<Broken>();
    begin();
    EXPECT_EQ(ask(order(1)), BankWord::Done) << "the outbox only tells of it";
    EXPECT_EQ(noticed(), 1u);

    // A file that may not grow is as good as a full disk.
    const std::string before = textOf(EmbeddedBank::kFileName);
    Ear ear;
    {
        const zvxtest::TightFiles tight(before.size() + 5);
        bank->ask(order(2), ear.listener());
        EXPECT_TRUE(until([&] { return noticed() == 2; }));
    }
    EXPECT_TRUE(ear.words().empty());
    EXPECT_EQ(textOf(EmbeddedBank::kFileName), before);
    EXPECT_EQ(ask(order(2)), BankWord::Done);
    bank.reset();
    std::filesystem::remove(folder.path() / EmbeddedBank::kFileName);
    std::filesystem::create_symlink("elsewhere", folder.path() / EmbeddedBank::kFileName);
    EXPECT_THROW(begin(), std::exception) << "a link may lead anywhere";
}

} // namespace
