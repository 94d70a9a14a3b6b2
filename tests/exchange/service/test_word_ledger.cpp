#include "exchange/service/word_ledger.h"

#include "exchange/service/sync_counter.h"
#include "exchange/service/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>

namespace {

using namespace zvx;

class WordLedgerTest : public testing::Test
{
protected:
    using Lines = std::vector<std::pair<std::uint64_t, std::string>>;

    /// What a ledger reads that is opened now.
    Lines lines()
    {
        Lines read;
        const WordLedger ledger(file, [&read](ActionKey id, const std::string &words) {
            read.emplace_back(id.low, words);
            return words.find("bad") == std::string::npos;
        });
        return read;
    }
    void add(std::uint64_t id, const std::string &words)
    {
        WordLedger(file, [](ActionKey, const std::string &) { return true; }).add({0, id}, words);
    }
    void append(const std::string &text)
    {
        std::ofstream(file, std::ios::binary | std::ios::app) << text;
    }
    std::string text() const
    {
        std::ostringstream all;
        all << std::ifstream(file, std::ios::binary).rdbuf();
        return all.str();
    }

    zvxtest::TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "words";
};

TEST_F(WordLedgerTest, TellsItsLinesInTheirOrder)
{
    EXPECT_EQ(lines(), Lines());
    add(1, "packed");
    add(2, "sent with more words");
    add(1, "sent");
    EXPECT_EQ(lines(), (Lines{{1, "packed"}, {2, "sent with more words"}, {1, "sent"}}));
    EXPECT_EQ(text().substr(0, 40), "00000000000000000000000000000001 packed\n");
    struct stat facts {
    };
    ASSERT_EQ(::stat(file.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0600u);
}

TEST_F(WordLedgerTest, MakesSureOfItsNameBeforeItsWords)
{
    const int before = zvxtest::folderSyncs();
    lines();
    EXPECT_GT(zvxtest::folderSyncs(), before);
}

TEST_F(WordLedgerTest, CutsOffALineThatIsTorn)
{
    add(1, "packed");
    const std::string whole = text();
    append("00000000000000000000000000000002 sen");
    EXPECT_EQ(lines(), (Lines{{1, "packed"}}));
    EXPECT_EQ(text(), whole);
    add(2, "sent");
    EXPECT_EQ(lines(), (Lines{{1, "packed"}, {2, "sent"}}));
}

TEST_F(WordLedgerTest, RefusesAFileThatHoldsSomethingElse)
{
    for (const std::string line : {"hello", "00000000000000000000000000000001",
                                   "00000000000000000000000000000001 bad", "xyz sent"}) {
        std::filesystem::remove(file);
        append(line + "\n");
        EXPECT_THROW(lines(), std::runtime_error) << line;
        EXPECT_EQ(text(), line + "\n") << "it is left as it was";
    }
    file = folder.path();
    EXPECT_THROW(lines(), std::runtime_error) << "a folder";
}

} // namespace
