#include "exchange/service/json_text.h"
#include "exchange/service/message_file.h"
#include "exchange/service/parameters.h"
#include "exchange/service/protocol.h"

#include "exchange/service/temporary_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <set>

namespace {

using namespace zvx;

TEST(Protocol, HasTheFortySixPathsInTheirOrder)
{
    const std::vector<std::string> expected = {"sync.html",
                                               "update.html",
                                               "market.html",
                                               "message.html",
                                               "market/check.html",
                                               "market/composite.html",
                                               "market/collection.html",
                                               "market/list.html",
                                               "collection/item.html",
                                               "collection/trade.html",
                                               "market/latest-list.html",
                                               "collection/type.html",
                                               "market/jit.html",
                                               "market/day.html",
                                               "market/week.html",
                                               "market/month.html",
                                               "market/detail.html",
                                               "myaccount.html",
                                               "cap.html",
                                               "myaccount/gather.html",
                                               "revoke.html",
                                               "myaccount/optional.html",
                                               "myaccount/append.html",
                                               "myaccount/remove.html",
                                               "myaccount/entrust.html",
                                               "myaccount/his-entrust.html",
                                               "myaccount/trade.html",
                                               "myaccount/hold.html",
                                               "myaccount/take-list.html",
                                               "pay/list.html",
                                               "login.html",
                                               "reg.html",
                                               "reg/send.html",
                                               "forget/validate.html",
                                               "forget/send.html",
                                               "pay/qrcode.html",
                                               "pay/send.html",
                                               "pay/trade.html",
                                               "pay/cash-deal.html",
                                               "hold/list.html",
                                               "pay/hx.html",
                                               "trade/buy.html",
                                               "trade/sell.html",
                                               "trade/revoke.html",
                                               "myaccount/take.html",
                                               "trade/take.html"};
    std::vector<std::string> paths;
    for (const PathEntry &entry : contractPaths())
        paths.emplace_back(entry.path);
    EXPECT_EQ(paths, expected);
    EXPECT_EQ(std::set<std::string>(paths.begin(), paths.end()).size(), 46u);
    EXPECT_EQ(findPath("market/list.html")->method, "GET");
    EXPECT_EQ(findPath("trade/take.html")->method, "POST");
    EXPECT_EQ(findPath("market/day"), nullptr);
    EXPECT_EQ(findPath(""), nullptr);
}

TEST(Protocol, EveryStatusHasItsHttpStatus)
{
    const Envelope envelope("5f0c9a41d2e37b68", [] { return 1577840400123; });
    const std::pair<WireStatus, int> table[]
        = {{WireStatus::Ok, 200},         {WireStatus::Refused, 200},  {WireStatus::Protocol, 400},
           {WireStatus::BadRequest, 400}, {WireStatus::Session, 401},  {WireStatus::Elsewhere, 401},
           {WireStatus::NotFound, 404},   {WireStatus::Method, 405},   {WireStatus::TooLarge, 413},
           {WireStatus::Busy, 503},       {WireStatus::Unserved, 501}, {WireStatus::Failed, 500}};
    for (const auto &[status, http] : table) {
        const HttpAnswer answer = envelope.refusal(status, "不\"行\"");
        EXPECT_EQ(answer.status, http);
        const auto body = nlohmann::json::parse(*answer.body.front());
        EXPECT_EQ(body,
                  (nlohmann::json{{"protocol", 1},
                                  {"status", wireName(status)},
                                  {"boot", "5f0c9a41d2e37b68"},
                                  {"time", 1577840400123},
                                  {"message", "不\"行\""}}));
    }
}

TEST(Parameters, TakePlainDecimalsWithinBoundsAlone)
{
    EXPECT_EQ(readInteger("0", 0, 9), 0);
    EXPECT_EQ(readInteger("25000", 0, 25000), 25000);
    EXPECT_EQ(readInteger("9223372036854775807", 0, INT64_MAX), INT64_MAX);
    for (const char *text : {"", "-1", "+1", " 1", "1 ", "01", "00", "1.0", "1e3", "0x1", "25001",
                             "9223372036854775808", "99999999999999999999", "一"})
        EXPECT_FALSE(readInteger(text, 0, 25000)) << text;
}

TEST(Parameters, NameTheFirstThatIsWrong)
{
    const auto parameters = *HttpParameters::parse("a=1&b=x&c=y&collection=-0");
    ParameterReader read(parameters);
    EXPECT_EQ(read.integer("a", 0, 9), 1);
    EXPECT_FALSE(read.integer("d", 0, 9));
    EXPECT_EQ(read.fault(), "");
    EXPECT_FALSE(read.integer("b", 0, 9));
    EXPECT_FALSE(read.integer("c", 0, 9));
    EXPECT_EQ(read.fault(), "b");
    EXPECT_EQ(read.collection(), CollectionId(0));
}

TEST(JsonText, EscapesWhatHasTo)
{
    JsonText json;
    json.open('{').key("a").text("\"\\/\n\x01\x7f长").key("b").open('[');
    json.number(INT64_MIN).null().boolean(true).open('[').close(']').close(']').close('}');
    EXPECT_EQ(json.view(),
              "{\"a\":\"\\\"\\\\/\\u000a\\u0001\x7f长\","
              "\"b\":[-9223372036854775808,null,true,[]]}");
    EXPECT_EQ(nlohmann::json::parse(json.view())["a"], "\"\\/\n\x01\x7f长");
}

TEST(MessageFile, FollowsTheFileAndKeepsWhatWasRight)
{
    const zvxtest::TemporaryFolder folder;
    const auto file = folder.path() / MessageFile::fileName;
    MessageFile messages(folder.path());
    std::string fault;
    EXPECT_FALSE(messages.refresh(fault));
    EXPECT_EQ(messages.dataOf("lc", "岚川"),
              "{\"messages\":[{\"text\":\"欢迎来到岚川！\",\"link\":\"\"}]}");

    auto stamp = std::filesystem::file_time_type::clock::now();
    const auto write = [&](const std::string &text) {
        std::ofstream(file) << text;
        // Two writes within one tick of the file system's clock would look like one.
        std::filesystem::last_write_time(file, stamp += std::chrono::seconds(1));
    };
    write(R"({"lc": [{"text": "今日开市", "link": "https://a/b"}], "ch": []})");
    EXPECT_TRUE(messages.refresh(fault));
    EXPECT_EQ(fault, "");
    EXPECT_FALSE(messages.refresh(fault)) << "nothing changed";
    const std::string right = "{\"messages\":[{\"text\":\"今日开市\",\"link\":\"https://a/b\"}]}";
    EXPECT_EQ(messages.dataOf("lc", "岚川"), right);
    EXPECT_EQ(messages.dataOf("ch", "澄湖"), "{\"messages\":[]}");

    for (const char *text :
         {"", "{", "[]", R"({"lc": {}})", R"({"lc": [{"link": ""}]})", R"({"lc": [{"text": 1}]})",
          R"({"lc": [{"text": "a", "link": "javascript:x"}]})",
          "{\"lc\": [{\"text\": \"\xFF\"}]}"}) {
        write(text);
        fault.clear();
        EXPECT_FALSE(messages.refresh(fault)) << text;
        EXPECT_NE(fault, "") << text;
        EXPECT_EQ(messages.dataOf("lc", "岚川"), right) << text;
    }
    std::filesystem::remove(file);
    EXPECT_TRUE(messages.refresh(fault));
    EXPECT_NE(messages.dataOf("lc", "岚川"), right);
}

} // namespace
