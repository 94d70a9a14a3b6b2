#include "exchange/service/embedded_carrier.h"

#include "exchange/accounts/text_gateway.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/service/tight_files.h"
#include "exchange/service/until.h"
#include "exchange/store/clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace {

using namespace zvx;
using zvxtest::until;

/// Keeps texts, from any thread; may be out of order.
class Box : public TextGateway
{
public:
    void send(std::string_view phone, std::string_view text) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (isBroken)
            throw std::runtime_error("full");
        m_texts.push_back(std::string(phone) + ": " + std::string(text));
    }
    std::vector<std::string> texts() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_texts;
    }
    std::atomic<bool> isBroken{false};

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_texts;
};

class EmbeddedCarrierTest : public testing::Test
{
protected:
    EmbeddedCarrierTest()
    {
        options.folder = folder.path();
        options.prepareDelay = 1'000;
        options.shipDelay = 500;
        options.clock = clock;
        options.outbox = box;
    }
    ~EmbeddedCarrierTest() override { carrier.reset(); }

    void begin() { carrier = std::make_unique<EmbeddedCarrier>(options); }
    void restart()
    {
        carrier.reset();
        begin();
    }
    void ask(std::uint64_t id)
    {
        carrier->ask({{1, id}, "岁寒三友", Quantity(3), {"林晓月", "13900000001", "和平路1号"}},
                     [this, own = carrier.get(), id](const CarrierWord &word) {
                         if (letsGo && word.stage == DeliveryStage::Preparing)
                             own->goAhead({1, id});
                         const std::lock_guard<std::mutex> lock(m_mutex);
                         m_words += std::to_string(id) + ':'
                             + std::to_string(static_cast<int>(word.stage))
                             + (word.tracking.number.empty() ? "" : "+") + ' ';
                         m_tracking = word.tracking;
                     });
    }
    std::string words() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_words;
    }
    void expectWords(const std::string &expected)
    {
        EXPECT_TRUE(until([&] { return words() == expected; }))
            << words() << "instead of " << expected;
    }
    void pass(std::int64_t milliseconds) { clock->advance(milliseconds); }

    zvxtest::TemporaryFolder folder;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>(TimeMs(1'577'851'200'000));
    std::shared_ptr<Box> box = std::make_shared<Box>();
    EmbeddedCarrierOptions options;
    std::unique_ptr<EmbeddedCarrier> carrier;
    std::atomic<bool> letsGo{true}; ///< whether the exchange answers that it heard
    mutable std::mutex m_mutex;
    std::string m_words; ///< id:stage, a plus where there is a tracking number
    Tracking m_tracking;
};

TEST_F(EmbeddedCarrierTest, PacksAndSendsEachAfterItsTime)
{
    begin();
    ask(7);
    pass(999);
    EXPECT_EQ(words(), "");
    pass(1);
    expectWords("7:1 ");
    pass(499);
    EXPECT_EQ(words(), "7:1 ");
    pass(1);
    expectWords("7:1 7:2+ ");
    EXPECT_EQ(m_tracking.carrier, "自营物流");
    EXPECT_EQ(m_tracking.number, "ZY1000000007");
    EXPECT_EQ(box->texts(),
              (std::vector<std::string>{
                  "carrier: 岁寒三友，3件，收货人林晓月，和平路1号，已备货",
                  "carrier: 岁寒三友，3件，收货人林晓月，和平路1号，已发货，运单号ZY1000000007"}));
}

TEST_F(EmbeddedCarrierTest, SendsAParcelOnceHoweverOftenItIsAsked)
{
    begin();
    ask(7);
    ask(7);
    pass(1'000);
    expectWords("7:1 ");
    ask(7);
    expectWords("7:1 7:1 ");
    pass(500);
    expectWords("7:1 7:1 7:2+ ");
    ask(7);
    expectWords("7:1 7:1 7:2+ 7:2+ ");
    restart();
    ask(7);
    expectWords("7:1 7:1 7:2+ 7:2+ 7:2+ ");
    EXPECT_EQ(box->texts().size(), 2u);
}

TEST_F(EmbeddedCarrierTest, GoesOnFromItsLedgerAfterARestart)
{
    begin();
    ask(7);
    pass(1'000);
    expectWords("7:1 ");
    restart();
    ask(7);
    expectWords("7:1 7:1 ");
    pass(499);
    EXPECT_EQ(words(), "7:1 7:1 ");
    pass(1);
    expectWords("7:1 7:1 7:2+ ");
    EXPECT_EQ(box->texts().size(), 2u);
}

TEST_F(EmbeddedCarrierTest, SendsNothingThatMayStillBeTakenBack)
{
    letsGo = false;
    begin();
    ask(7);
    ask(8);
    pass(1'000);
    ASSERT_TRUE(until([&] { return words().size() == 8; })) << words();
    pass(100'000);
    ask(9); // what others wait for does not wait for these
    pass(1'000);
    ASSERT_TRUE(until([&] { return words().size() == 12; })) << words();
    carrier->giveUp({1, 8});
    ASSERT_TRUE(until([&] { return words().size() == 16; })) << words();
    EXPECT_EQ(words().substr(8), "9:1 8:3 ");
    carrier->goAhead({1, 7});
    ASSERT_TRUE(until([&] { return words().size() == 21; })) << words();
    EXPECT_EQ(words().substr(16), "7:2+ ");
    letsGo = true;
    restart();
    ask(9);
    pass(500);
    ASSERT_TRUE(until([&] { return words().size() >= 25; })) << words();
    pass(500);
    ASSERT_TRUE(until([&] { return words().size() == 30; })) << words();
    EXPECT_EQ(words().substr(21), "9:1 9:2+ ");
}

TEST_F(EmbeddedCarrierTest, GivesUpWhatIsNotSent)
{
    begin();
    ask(7);
    carrier->giveUp({1, 7});
    expectWords("7:3 ");
    ask(8);
    pass(1'000);
    expectWords("7:3 8:1 ");
    carrier->giveUp({1, 8});
    expectWords("7:3 8:1 8:3 ");
    ask(9);
    pass(1'000);
    expectWords("7:3 8:1 8:3 9:1 ");
    pass(500);
    expectWords("7:3 8:1 8:3 9:1 9:2+ ");
    carrier->giveUp({1, 9});
    carrier->giveUp({1, 10});
    ask(8);
    expectWords("7:3 8:1 8:3 9:1 9:2+ 8:3 ");
    restart();
    ask(7);
    expectWords("7:3 8:1 8:3 9:1 9:2+ 8:3 7:3 ");
}

TEST_F(EmbeddedCarrierTest, GivesUpWhenItCanWriteAgain)
{
    std::atomic<int> notices{0};
    options.notice = [&](const std::string &) { ++notices; };
    begin();
    ask(6);
    pass(1'000);
    expectWords("6:1 ");
    ask(7);
    {
        const zvxtest::TightFiles tight(
            std::filesystem::file_size(folder.path() / EmbeddedCarrier::kFileName) + 5);
        carrier->giveUp({1, 7});
        ASSERT_TRUE(until([&] { return notices == 1; }));
    }
    EXPECT_EQ(words(), "6:1 ");
    pass(29'999);
    EXPECT_EQ(words().find("7:"), std::string::npos);
    pass(1);
    ASSERT_TRUE(until([&] { return words().find("7:3 ") != std::string::npos; })) << words();
    EXPECT_EQ(words().find("7:1"), std::string::npos) << "it was packed for nobody";
    EXPECT_EQ(notices, 1);
}

TEST_F(EmbeddedCarrierTest, RefusesWhereItWasToldTo)
{
    options.refuses = true;
    begin();
    ask(7);
    pass(1'000);
    expectWords("7:3 ");
    options.refuses = false;
    restart();
    ask(7);
    expectWords("7:3 7:3 ");
    EXPECT_EQ(
        box->texts(),
        (std::vector<std::string>{"carrier: 岁寒三友，3件，收货人林晓月，和平路1号，已拒绝"}));
}

TEST_F(EmbeddedCarrierTest, WithoutDelaysAllHappensAtOnce)
{
    options.prepareDelay = 0;
    options.shipDelay = 0;
    begin();
    ask(7);
    expectWords("7:1 7:2+ ");
}

TEST_F(EmbeddedCarrierTest, WhatIsMissingInTheOutboxIsSentAllTheSame)
{
    options.prepareDelay = 0;
    options.shipDelay = 0;
    box->isBroken = true;
    std::mutex mutex;
    std::vector<std::string> notices;
    options.notice = [&](const std::string &line) {
        const std::lock_guard<std::mutex> lock(mutex);
        notices.push_back(line);
    };
    begin();
    ask(7);
    expectWords("7:1 7:2+ ");
    carrier.reset();
    ASSERT_EQ(notices.size(), 2u);
    EXPECT_EQ(notices[0], "the carrier's step is missing in the outbox: full");
}

} // namespace
