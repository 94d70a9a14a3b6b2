#include "exchange/service/application_file.h"

#include "exchange/service/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

namespace {

using namespace zvx;

const std::string market = "/lc/youbika/";

const std::string good = R"({"format": 1, "markets": {"/lc/youbika/": {
  "open": [{"collection": 2900, "code": "291001", "name": "春晓大版", "price": 1000,
            "quantity": 200, "from": "2020-01-01", "to": "2020-01-07"}],
  "applications": [
    {"number": 7001, "phone": "13800000000", "time": "2020-01-01 09:30:00", "collection": 2900,
     "code": "291001", "name": "春晓大版", "price": 1000, "quantity": 100,
     "state": "granted", "granted": 20}]}}})";

class ApplicationFileTest : public testing::Test
{
protected:
    /// Writes the file, and makes sure that it counts as changed.
    void write(const std::string &text)
    {
        std::ofstream(path, std::ios::binary) << text;
        touch();
    }
    void touch()
    {
        std::filesystem::last_write_time(
            path, std::filesystem::file_time_type() + std::chrono::hours(++m_edits));
    }
    /// What the log is told.
    std::string refresh()
    {
        std::string fault;
        file.refresh(fault);
        return fault;
    }
    static std::string replaced(const std::string &before, const std::string &after)
    {
        std::string text = good;
        const std::size_t at = text.find(before);
        EXPECT_NE(at, std::string::npos) << before;
        return text.replace(at, before.size(), after);
    }
    void expectGood() const
    {
        EXPECT_EQ(file.of(market)->open.size(), 1u);
        EXPECT_EQ(file.of(market)->byPerson.size(), 1u);
    }

    zvxtest::TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "applications.json";
    ApplicationFile file{folder.path(), {market, "/lc/chajiu/"}};

private:
    int m_edits = 0;
};

TEST_F(ApplicationFileTest, WithoutAFileThereIsNothing)
{
    EXPECT_EQ(refresh(), "");
    EXPECT_TRUE(file.of(market)->open.empty());
    EXPECT_TRUE(file.of("/nowhere/")->open.empty());
}

TEST_F(ApplicationFileTest, ReadsWhatTheOperatorWrote)
{
    write(good);
    EXPECT_EQ(refresh(), "");
    const auto applications = file.of(market);
    ASSERT_EQ(applications->open.size(), 1u);
    const OpenIssue &issue = applications->open.front();
    EXPECT_EQ(issue.collection, CollectionId(2900));
    EXPECT_EQ(issue.code, "291001");
    EXPECT_EQ(issue.name, "春晓大版");
    EXPECT_EQ(issue.price, Fen(1000));
    EXPECT_EQ(issue.quantity, Quantity(200));
    const auto mine = applications->of("13800000000", "LC00000001");
    ASSERT_EQ(mine.size(), 1u);
    EXPECT_EQ(mine.front()->number, 7001);
    EXPECT_EQ(mine.front()->time, TimeMs(1'577'842'200'000)) << "09:30 in UTC+8";
    EXPECT_EQ(mine.front()->day, TradingDay(20'200'101));
    EXPECT_EQ(mine.front()->state, ApplicationState::Granted);
    EXPECT_EQ(mine.front()->granted, Quantity(20));
    EXPECT_TRUE(applications->of("13800000001", "LC00000001").empty());
    EXPECT_TRUE(file.of("/lc/chajiu/")->open.empty());
}

TEST_F(ApplicationFileTest, TheDaysAreIncluded)
{
    write(good);
    refresh();
    const auto open
        = [&](std::int64_t day) { return file.of(market)->openOn(TradingDay(day)).size(); };
    EXPECT_EQ(open(20'191'231), 0u);
    EXPECT_EQ(open(20'200'101), 1u);
    EXPECT_EQ(open(20'200'107), 1u);
    EXPECT_EQ(open(20'200'108), 0u);
}

TEST_F(ApplicationFileTest, AnAccountsApplicationsStandNewestFirst)
{
    const auto entry = [](int number, const std::string &person, const std::string &time,
                          const std::string &state) {
        return R"({"number": )" + std::to_string(number) + ", " + person + R"(, "time": ")" + time
            + R"(", "collection": 5, "code": "5", "name": "x", "price": 1, "quantity": 9, "state": ")"
            + state + "\"}";
    };
    const std::string phone = R"("phone": "13800000000")";
    const std::string account = R"("account": "LC00000001")";
    write(R"({"format": 1, "markets": {"/lc/youbika/": {"applications": [)"
          + entry(1, phone, "2019-12-31 23:59:59", "pending") + ","
          + entry(2, account, "2020-01-01 00:00:00", "missed") + ","
          + entry(3, R"("phone": "13800000001")", "2020-01-01 10:00:00", "pending") + ","
          + entry(4, phone, "2020-01-01 00:00:00", "withdrawn") + "]}}}");
    EXPECT_EQ(refresh(), "");
    std::string numbers;
    for (const Application *one : file.of(market)->of("13800000000", "LC00000001"))
        numbers += std::to_string(one->number) + (one->granted ? "g" : "") + " ";
    EXPECT_EQ(numbers, "4 2g 1 ")
        << "whose number is the later one first; a missed one got nothing";
}

TEST_F(ApplicationFileTest, FollowsChangesAndTheFilesEnd)
{
    write(good);
    refresh();
    const auto held = file.of(market);
    write(R"({"format": 1, "markets": {}})");
    EXPECT_EQ(refresh(), "");
    EXPECT_TRUE(file.of(market)->open.empty());
    EXPECT_EQ(held->open.size(), 1u) << "an answer on its way keeps what it began with";
    write(good);
    EXPECT_EQ(refresh(), "");
    expectGood();
    std::filesystem::remove(path);
    EXPECT_EQ(refresh(), "");
    EXPECT_TRUE(file.of(market)->open.empty());
}

struct Fault {
    const char *name;
    std::string before;
    std::string after;
    std::string said;
};

TEST_F(ApplicationFileTest, AFileThatIsNotRightLeavesTheLastGoodOne)
{
    const std::string deep(100'000, '[');
    const Fault faults[] = {
        {"cut", "]}}}", "", "end of input"},
        {"no object", good, "[]", "has to be an object"},
        {"empty", good, "", "end of input"},
        {"bytes", good, std::string("\0\xff\xfe\0", 4), "applications.json"},
        {"deep", good, deep, "applications.json"},
        {"deep inside", "\"price\": 1000,", "\"price\": " + deep + std::string(100'000, ']') + ",",
         "markets./lc/youbika/.open[0].price: has to be a whole number from 1 to 13107199, not "
         "array"},
        {"other format", "\"format\": 1", "\"format\": 2", "format: has to be a whole number"},
        {"no format", "\"format\": 1, ", "", "lacks \"format\""},
        {"no market", "/lc/youbika/", "/lc/youbi/", "markets./lc/youbi/: there is no such market"},
        {"slip", "\"open\"", "\"opne\"", "unknown key \"opne\""},
        {"slip of a field", "\"quantity\": 200", "\"count\": 200", "unknown key \"count\""},
        {"key twice", "\"format\": 1", "\"format\": 1, \"format\": 1", "stands twice"},
        {"a line in a key", "\"open\"", "\"o\\npen\"", "unknown key \"o?pen\""},
        {"a long key", "\"open\"", "\"" + std::string(500'000, 'k') + "\"", "kkk...\""},
        {"collection 0", "\"collection\": 2900", "\"collection\": 0", "collection: has to be"},
        {"price of a float", "\"price\": 1000", "\"price\": 1000.5", "not 1000.5"},
        {"price too high", "\"price\": 1000", "\"price\": 13107200", "price: has to be"},
        {"day that is none", "\"from\": \"2020-01-01\"", "\"from\": \"2020-02-30\"",
         "from: has to be a day"},
        {"days the wrong way", "\"to\": \"2020-01-07\"", "\"to\": \"2019-12-31\"",
         "to: is before \"from\""},
        {"time without seconds", "09:30:00", "09:30", "time: has to be a time"},
        {"hour 24", "09:30:00", "24:00:00", "time: has to be a time"},
        {"signs for digits", "09:30:00", "0/:30:00", "time: has to be a time"},
        {"before all time", "2020-01-01 09:30:00", "1970-01-01 07:59:59", "time: has to be a time"},
        {"nobody", "\"phone\": \"13800000000\", ", "", "needs either"},
        {"two names", "\"phone\"", "\"account\": \"LC00000001\", \"phone\"", "needs either"},
        {"short phone", "13800000000", "1380000000", "phone: has to be of 11 digits"},
        {"letters of a phone", "13800000000", "1380000000a", "phone: has to be of 11 digits"},
        {"state that is none", "\"granted\", \"granted\"", "\"done\", \"granted\"",
         "state: has to be"},
        {"nothing granted", ", \"granted\": 20", "", "lacks \"granted\""},
        {"more than asked", "\"granted\": 20", "\"granted\": 101", "granted: has to be"},
        {"granted and pending", "\"state\": \"granted\"", "\"state\": \"pending\"",
         "stands there only where"},
        {"name with a line", "春晓大版\", \"price\": 1000,\n            ",
         "春\\n晓\", \"price\": 1000, ", "name: holds a control character"},
        {"half a character", "春晓大版", "\xe6\x98", "applications.json"},
    };
    write(good);
    EXPECT_EQ(refresh(), "");
    for (const Fault &fault : faults) {
        SCOPED_TRACE(fault.name);
        write(replaced(fault.before, fault.after));
        const std::string said = refresh();
        EXPECT_NE(said.find(path.string() + " is not used: "), std::string::npos) << said;
        EXPECT_NE(said.find(fault.said), std::string::npos) << said;
        EXPECT_EQ(said.find('\n'), std::string::npos) << "one line";
        EXPECT_LT(said.size(), 500u);
        expectGood();
        EXPECT_EQ(refresh(), "") << "told once";
    }
    write(good);
    EXPECT_EQ(refresh(), "");
    expectGood();
}

TEST_F(ApplicationFileTest, NumbersAreUniqueInTheirMarket)
{
    const std::size_t begin = good.find("{\"number\"");
    const std::string entry = good.substr(begin, good.find(']', begin) - begin);
    write(replaced(entry, entry + "," + entry));
    EXPECT_NE(refresh().find("applications[1]: number 7001 is used twice"), std::string::npos);
}

TEST_F(ApplicationFileTest, SizesAreBounded)
{
    const std::size_t begin = good.find("{\"collection\"");
    const std::string issue = good.substr(begin, good.find(']', begin) - begin);
    std::string many = issue;
    for (std::size_t i = 1; i < ApplicationFile::issueBound; ++i)
        many += "," + issue;
    write(replaced(issue, many));
    EXPECT_EQ(refresh(), "");
    EXPECT_EQ(file.of(market)->open.size(), ApplicationFile::issueBound);
    write(replaced(issue, many + "," + issue));
    EXPECT_NE(refresh().find("more than 200 entries"), std::string::npos);
    write(good + std::string(ApplicationFile::fileBound, ' '));
    EXPECT_NE(refresh().find("it is longer than 2048 KiB"), std::string::npos);
    EXPECT_EQ(file.of(market)->open.size(), ApplicationFile::issueBound);
}

TEST_F(ApplicationFileTest, WhatIsNoFileIsNotOpened)
{
    write(good);
    refresh();
    std::filesystem::remove(path);
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    touch();
    EXPECT_NE(refresh().find("it is no file"), std::string::npos);
    expectGood();
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    touch();
    EXPECT_NE(refresh().find("it is no file"), std::string::npos);
    expectGood();
}

} // namespace
