#include "exchange/service/parameters.h"

#include "exchange/service/corpus.h"
#include "exchange/service/mutator.h"
#include "exchange/service/recording_server.h"

#include <gtest/gtest.h>

namespace {

using namespace zvx;
using zvxtest::FormCase;
using zvxtest::RecordingServer;
using zvxtest::RequestCase;

std::string valueText(const std::optional<std::int64_t> &value)
{
    return value ? std::to_string(*value) : "-";
}

TEST(Corpus, RequestsHaveTheirVerdicts)
{
    RecordingServer server;
    const auto cases = zvxtest::requestCorpus();
    EXPECT_GE(cases.size(), 100u);
    for (const RequestCase &one : cases) {
        const auto talk = server.talk({one.bytes});
        EXPECT_EQ(talk.answers, one.answers) << one.name;
        EXPECT_EQ(talk.handled.size(), one.handled) << one.name << ' ' << describe(talk);
        EXPECT_TRUE(talk.closed) << one.name;
    }
}

TEST(Corpus, VerdictsDoNotDependOnHowTheBytesCome)
{
    constexpr std::size_t shortEnough = 400;
    RecordingServer server;
    zvxtest::Mutator chance(1, {}, {});
    for (const RequestCase &one : zvxtest::requestCorpus()) {
        const auto whole = server.talk({one.bytes});
        const std::size_t most = one.bytes.size() <= shortEnough ? one.bytes.size() : 40;
        std::vector<std::string> bytes = chance.split(one.bytes, most);
        if (one.bytes.size() <= shortEnough) {
            bytes.clear();
            for (const char c : one.bytes)
                bytes.emplace_back(1, c);
        }
        const auto split = server.talk(bytes);
        EXPECT_EQ(split, whole) << one.name << "\nwhole " << describe(whole) << "\nsplit "
                                << describe(split);
    }
}

TEST(Corpus, WhatIsRefusedEndsTheConnectionByItself)
{
    RecordingServer server;
    for (const RequestCase &one : zvxtest::requestCorpus()) {
        if (!one.isRefused())
            continue;
        const auto talk = server.talk({one.bytes}, RecordingServer::Staying);
        EXPECT_EQ(talk.answers, one.answers) << one.name;
        EXPECT_TRUE(talk.closed) << one.name;
    }
}

TEST(Corpus, FormsHaveTheirVerdicts)
{
    const auto cases = zvxtest::formCorpus();
    EXPECT_GE(cases.size(), 50u);
    for (const FormCase &one : cases) {
        const auto pairs = HttpParameters::parse(one.bytes);
        EXPECT_EQ(pairs ? std::to_string(pairs->all().size()) : "refused", one.pairs) << one.name;
        if (!pairs)
            continue;
        ParameterReader read(*pairs);
        read.protocolFits(ParameterReader::Required);
        const auto collection = read.collection();
        const auto price = read.integer("price", 1, 13'107'199);
        const auto quantity = read.integer("quantity", 1, 100'000'000);
        EXPECT_EQ(read.fault().empty() ? "-" : read.fault(), one.fault) << one.name;
        EXPECT_EQ((collection ? std::to_string(collection->value()) : "-") + ',' + valueText(price)
                      + ',' + valueText(quantity),
                  one.order)
            << one.name;
    }
}

} // namespace
