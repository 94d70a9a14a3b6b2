#include "exchange/service/http_server.h"
#include "exchange/service/parameters.h"
#include "exchange/service/request_head.h"

#include "exchange/service/corpus.h"
#include "exchange/service/mutator.h"
#include "exchange/service/raw_client.h"
#include "exchange/service/recording_server.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using zvxtest::FuzzEffort;
using zvxtest::Mutator;
using zvxtest::RecordingServer;

/// What to bend: right requests weigh more, since a bend or two often makes them wrong.
std::vector<std::string> requests()
{
    std::vector<std::string> all;
    for (const auto &one : zvxtest::requestCorpus())
        all.insert(all.end(), one.isRefused() ? 1 : 12, one.bytes);
    return all;
}

std::vector<std::string> forms()
{
    std::vector<std::string> all;
    for (const auto &one : zvxtest::formCorpus())
        all.insert(all.end(), one.pairs == "refused" ? 1 : 2, one.bytes);
    return all;
}

/// The header block that says the same in the plainest way.
std::string plainText(const RequestHead &head)
{
    std::string text = head.method + ' ' + head.target + " HTTP/1.1\r\nHost: h\r\n";
    if (!head.authorization.empty())
        text += "Authorization: " + head.authorization + "\r\n";
    if (!head.contentType.empty())
        text += "Content-Type: " + head.contentType + "\r\n";
    if (head.chunked)
        text += "Transfer-Encoding: chunked\r\n";
    else if (head.contentLength > 0)
        text += "Content-Length: " + std::to_string(head.contentLength) + "\r\n";
    if (head.expectsContinue)
        text += "Expect: 100-continue\r\n";
    if (!head.keepAlive)
        text += "Connection: close\r\n";
    return text + "\r\n";
}

/// The form that says the same with everything escaped.
std::string plainText(const HttpParameters &parameters)
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    const auto escape = [&text, &digits](const std::string &part) {
        for (const char c : part) {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', digits[byte / 16], digits[byte % 16]};
        }
    };
    for (const auto &[name, value] : parameters.all()) {
        text += text.empty() ? "" : "&";
        escape(name);
        text += '=';
        escape(value);
    }
    return text;
}

/// What every accepted header block must be, whatever was sent.
void expectSound(const RequestHead &head, const std::string &block, const HttpLimits &limits)
{
    ASSERT_FALSE(head.target.empty()) << block;
    EXPECT_EQ(head.target.front(), '/') << block;
    EXPECT_LE(head.target.size(), limits.address);
    EXPECT_LE(head.contentLength, limits.body);
    EXPECT_LE(block.size(), limits.header);
    EXPECT_EQ(block.find('\0'), std::string::npos);
    EXPECT_FALSE(head.chunked && head.contentLength > 0) << block;
    EXPECT_TRUE(head.method == "POST" || (!head.chunked && head.contentLength == 0)) << block;
    for (const char c : head.target)
        EXPECT_TRUE(c > 0x20 && c < 0x7F && c != '#') << block;
    for (std::size_t i = 0; i < block.size(); ++i) {
        const bool behindReturn = i > 0 && block[i - 1] == '\r';
        EXPECT_EQ(block[i] == '\n', behindReturn) << block;
    }
}

/// Reading what was understood gives the same again.
void expectSameAgain(const RequestHead &head, const HttpLimits &roomy)
{
    const auto result = readRequestHead(plainText(head), roomy);
    const auto *again = std::get_if<RequestHead>(&result);
    ASSERT_NE(again, nullptr) << plainText(head);
    EXPECT_EQ(again->method, head.method);
    EXPECT_EQ(again->target, head.target);
    EXPECT_EQ(again->authorization, head.authorization);
    EXPECT_EQ(again->contentType, head.contentType);
    EXPECT_EQ(again->keepAlive, head.keepAlive);
    EXPECT_EQ(again->expectsContinue, head.expectsContinue);
    EXPECT_EQ(again->chunked, head.chunked);
    EXPECT_EQ(again->contentLength, head.contentLength);
}

TEST(Fuzz, HeaderBlocksAreSoundOrRefused)
{
    const HttpLimits limits;
    HttpLimits roomy;
    roomy.header *= 2;
    const FuzzEffort effort;
    Mutator mutator(effort.seed, requests(), zvxtest::requestSpice());
    int accepted = 0;
    int refused = 0;
    for (int i = 0; i < 20'000 * effort.times; ++i) {
        SCOPED_TRACE(effort.describe(i));
        const std::string text = mutator.next();
        const std::size_t end = text.find("\r\n\r\n");
        const std::string block = text.substr(0, end == std::string::npos ? end : end + 4);
        const auto result = readRequestHead(block, limits);
        if (const auto *fault = std::get_if<HttpFault>(&result)) {
            ++refused;
            EXPECT_TRUE(fault->status == 400 || fault->status == 413) << fault->status;
            EXPECT_FALSE(fault->reason.empty());
            EXPECT_LT(fault->reason.size(), 100u) << "reasons are ours, never the client's bytes";
        } else {
            ++accepted;
            const auto &head = std::get<RequestHead>(result);
            expectSound(head, block, limits);
            expectSameAgain(head, roomy);
            const std::string part = block.substr(0, mutator.below(block.size()));
            EXPECT_TRUE(std::holds_alternative<HttpFault>(readRequestHead(part, limits)))
                << "a part of it passes for the whole: " << part;
        }
        if (testing::Test::HasFailure())
            return;
    }
    EXPECT_GT(accepted, 1000) << "the mutations have to reach the deeper checks as well";
    EXPECT_GT(refused, 1000);
}

TEST(Fuzz, FormsAreTextOrRefused)
{
    const FuzzEffort effort;
    Mutator mutator(effort.seed, forms(), zvxtest::formSpice());
    int accepted = 0;
    int refused = 0;
    int numbers = 0;
    for (int i = 0; i < 40'000 * effort.times; ++i) {
        SCOPED_TRACE(effort.describe(i));
        const std::string text = mutator.next();
        const auto parameters = HttpParameters::parse(text);
        if (!parameters) {
            ++refused;
            continue;
        }
        ++accepted;
        EXPECT_LE(parameters->all().size(), 64u);
        for (const auto &[name, value] : parameters->all()) {
            EXPECT_FALSE(name.empty());
            EXPECT_EQ(name.find('\0'), std::string::npos);
            EXPECT_EQ(value.find('\0'), std::string::npos);
            EXPECT_EQ(*parameters->find(name), value) << "a name that occurs twice";
        }
        const auto again = HttpParameters::parse(plainText(*parameters));
        ASSERT_TRUE(again) << text;
        EXPECT_EQ(again->all(), parameters->all());

        ParameterReader read(*parameters);
        const auto price = read.integer("price", 1, 13'107'199);
        const std::string *given = parameters->find("price");
        if (price) {
            ++numbers;
            EXPECT_EQ(std::to_string(*price), *given) << "read as something else than it says";
            EXPECT_TRUE(*price >= 1 && *price <= 13'107'199);
        }
        EXPECT_EQ(read.fault(), given && !price ? "price" : "");
        const auto collection = read.collection();
        EXPECT_TRUE(!collection || *collection == CollectionId(0) || collection->inRange());
        if (testing::Test::HasFailure())
            return;
    }
    EXPECT_GT(accepted, 1000);
    EXPECT_GT(refused, 1000);
    EXPECT_GT(numbers, 1000);
}

TEST(Fuzz, ASocketGivesOneVerdictHoweverTheBytesCome)
{
    const FuzzEffort effort;
    RecordingServer server;
    Mutator mutator(effort.seed, requests(), zvxtest::requestSpice());
    std::size_t handled = 0;
    std::size_t refused = 0;
    for (int i = 0; i < 800 * effort.times; ++i) {
        SCOPED_TRACE(effort.describe(i));
        const std::string text = mutator.next(i % 4 == 0 ? 6 : 1);
        const auto whole = server.talk({text});
        const auto split = server.talk(mutator.split(text, 2 + mutator.below(9)));
        handled += whole.handled.size();
        ASSERT_TRUE(whole.closed);
        ASSERT_EQ(split, whole) << text << "\nwhole " << describe(whole) << "\nsplit "
                                << describe(split);
        for (const int status : whole.answers)
            ASSERT_TRUE(status == 200 || status == 400 || status == 413) << describe(whole);
        const auto faults = std::count_if(whole.answers.begin(), whole.answers.end(),
                                          [](int status) { return status >= 400; });
        refused += static_cast<std::size_t>(faults);
        ASSERT_TRUE(faults == 0 || (faults == 1 && whole.answers.back() >= 400))
            << "answered after a refusal: " << describe(whole);
        ASSERT_EQ(whole.handled.size(), whole.answers.size() - static_cast<std::size_t>(faults))
            << describe(whole);
    }
    EXPECT_GT(handled, 100u);
    EXPECT_GT(refused, 100u);
    EXPECT_EQ(zvxtest::fetch(server.server().port(), "/fine").status, 200);
    EXPECT_LE(server.server().counters().open, 2u) << "no client of before is still held";
}

} // namespace
