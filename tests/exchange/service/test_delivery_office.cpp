#include "exchange/accounts/random_source.h"
#include "exchange/core/market.h"
#include "exchange/service/delivery_office.h"
#include "exchange/service/sync_counter.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/store/store.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zvx;

using Outcome = DeliveryDesk::Outcome;
using Told = DeliveryDesk::Status;

const Recipient someone{"林晓月", "13900000001", "和平路1号"};

/// The process is gone, with everything that was not on the disk.
class Crash : public std::runtime_error
{
public:
    Crash() : std::runtime_error("crash") { }
};

class CountingRandom : public RandomSource
{
public:
    void fill(void *to, std::size_t size) override
    {
        ++m_next;
        for (std::size_t i = 0; i < size; ++i)
            static_cast<unsigned char *>(to)[i]
                = i < sizeof m_next ? static_cast<unsigned char>(m_next >> (8 * i)) : 0;
    }

private:
    std::uint64_t m_next = 0;
};

/// A market of two accounts with ten pieces each of collection 7, which may end at a command.
class TestMarket : public DeliveryMarket
{
public:
    enum Death { None, BeforeCommit, AfterCommit, Ended };

    TestMarket()
    {
        ListCollection listing;
        listing.collection = CollectionId(7);
        listing.previousClose = Fen(1'000);
        listing.issued = Quantity(100);
        carryOutAny(listing);
        for (int id = 1; id <= 2; ++id) {
            carryOutAny(OpenAccount{AccountId(id), kDefaultFee, {}});
            carryOutAny(GrantHolding{AccountId(id), CollectionId(7), Quantity(10), Fen(100), {}});
        }
    }

    Result carryOut(const RequestDelivery &command) override { return carryOutAny(command); }
    Result carryOut(const CancelDelivery &command) override { return carryOutAny(command); }
    Result carryOut(const AdvanceDelivery &command) override { return carryOutAny(command); }
    Result carryOut(const BurnKey &command) override { return carryOutAny(command); }

    std::vector<DeliveryRow> underWay() override
    {
        std::vector<DeliveryRow> found;
        for (const auto &[number, row] : rows)
            if (row.stage <= DeliveryStage::Preparing)
                found.push_back(row);
        return found;
    }
    std::optional<DeliveryRow> deliveryOf(AccountId account, ActionKey key) override
    {
        for (const auto &[number, row] : rows)
            if (!key.isNull() && row.account == account && row.key == key)
                return row;
        return std::nullopt;
    }
    std::optional<DeliveryRow> deliveryOf(ParcelId parcel) override
    {
        for (const auto &[number, row] : rows)
            if (row.parcel == parcel)
                return row;
        return std::nullopt;
    }
    std::vector<ParcelId> withoutDelivery(const std::vector<ParcelId> &parcels) override
    {
        ++looks;
        std::vector<ParcelId> strangers;
        for (const ParcelId id : parcels)
            if (!deliveryOf(id))
                strangers.push_back(id);
        return strangers;
    }
    bool isOfTransfer(AccountId account, ActionKey key) override
    {
        return account == AccountId(1) && transferKeys.count(key.low) > 0;
    }
    /// An accepted transfer, as the money desk would begin it.
    void pay(std::uint64_t key)
    {
        carryOutAny(Deposit{AccountId(1), Fen(10'000), {}});
        BeginTransfer transfer;
        transfer.account = AccountId(1);
        transfer.incoming = false;
        transfer.amount = Fen(100);
        transfer.bank = {3, key};
        transfer.key = {0, key};
        EXPECT_EQ(carryOutAny(transfer).status, Status::Accepted);
        transferKeys.insert(key);
    }
    const std::string &prefix() const override { return m_prefix; }
    std::string nameOf(CollectionId) override { return "岁寒三友"; }

    /// Pieces held and frozen.
    std::string holding(int account) const
    {
        const HoldingView view = market.holding(AccountId(account), CollectionId(7));
        return std::to_string(view.quantity.value()) + '/' + std::to_string(view.frozen.value());
    }

    Death next = None; ///< of the next command
    int commands = 0; ///< that were carried out
    int looks = 0; ///< at which parcels there are
    Market market;
    std::map<std::int64_t, DeliveryRow> rows;

private:
    Result carryOutAny(const Command &command)
    {
        const Death death = std::exchange(next, None);
        if (death == BeforeCommit)
            throw Crash();
        if (death == Ended)
            throw StoreError("ended");
        ++commands;
        std::vector<Event> events;
        const Result result = market.apply(command, TimeMs(1), events);
        for (const Event &event : events) {
            if (const auto *asked = std::get_if<DeliveryRequested>(&event)) {
                DeliveryRow row;
                row.number = asked->delivery;
                row.account = asked->account;
                row.collection = asked->collection;
                row.quantity = asked->quantity;
                row.parcel = asked->parcel;
                row.key = asked->key;
                rows[row.number.value()] = row;
            }
            if (const auto *moved = std::get_if<DeliveryMoved>(&event))
                rows[moved->delivery.value()].stage = moved->stage;
        }
        if (death == AfterCommit)
            throw Crash();
        return result;
    }

    std::string m_prefix = "/lc/youbika/";
    std::set<std::uint64_t> transferKeys;
};

/// A carrier that notes what it is asked for and speaks when the test does.
class TestCarrier : public CarrierGateway
{
public:
    void ask(const CarrierOrder &order, Answered answered) override
    {
        log += "ask " + std::to_string(order.id.low) + ' ' + order.goods + ' '
            + std::to_string(order.quantity.value()) + ' ' + order.recipient.person + '\n';
        answers[order.id.low] = std::move(answered);
    }
    void goAhead(ParcelId id) override { log += "go ahead " + std::to_string(id.low) + '\n'; }
    void giveUp(ParcelId id) override { log += "give up " + std::to_string(id.low) + '\n'; }

    std::string takeLog() { return std::exchange(log, {}); }

    std::string log;
    std::map<std::uint64_t, Answered> answers;
};

class DeliveryOfficeTest : public testing::Test
{
protected:
    DeliveryOfficeTest() : parcels(folder.path()) { restart(); }

    void restart()
    {
        office.emplace(DeliveryOffice::Tools{
                           carrier, parcels, clock, random,
                           [this](ParcelId id, const CarrierWord &word) { office->hear(id, word); },
                           [this](const std::string &line) { notices.push_back(line); },
                           [this](const std::string &reason) { faults.push_back(reason); }},
                       limits, counters);
        office->open(market);
    }

    DeliveryDesk::Done listener()
    {
        return [this](const Outcome &outcome) {
            ++answers;
            last = outcome;
        };
    }
    /// What is told: "ok" with the low half of a request's parcel, else the reason.
    std::string told()
    {
        EXPECT_EQ(std::exchange(answers, 0), 1) << "one answer";
        switch (last.status) {
        case Told::Accepted:
            return "ok " + std::to_string(last.parcel.low);
        case Told::Refused:
            EXPECT_FALSE(last.message.empty());
            return std::string(last.reason);
        case Told::Busy:
            return "busy";
        case Told::Failed:
            return "failed";
        }
        return {};
    }
    std::string request(int account, int quantity, std::uint64_t key, int collection = 7)
    {
        return request(account, quantity, key, someone, collection);
    }
    std::string request(int account, int quantity, std::uint64_t key, const Recipient &recipient,
                        int collection = 7)
    {
        office->request({&market,
                         AccountId(account),
                         CollectionId(collection),
                         Quantity(quantity),
                         recipient,
                         {0, key}},
                        listener());
        return told();
    }
    std::string cancel(int account, std::uint64_t parcel, std::uint64_t key)
    {
        office->cancel(market, AccountId(account), idOf(parcel), {0, key}, listener());
        return told();
    }
    std::string resolve(int account, std::uint64_t key)
    {
        office->resolve(market, AccountId(account), {0, key}, listener());
        return told();
    }
    void say(std::uint64_t parcel, DeliveryStage stage)
    {
        carrier.answers.at(parcel)(
            {stage, stage == DeliveryStage::Sent ? Tracking{"车", "T1"} : Tracking{}});
    }
    ParcelId idOf(std::uint64_t low) const
    {
        for (const auto &[number, row] : market.rows)
            if (row.parcel.low == low)
                return row.parcel;
        return {9, low};
    }
    std::size_t parcelCount() { return parcels.parcelsOf("/lc/youbika/").size(); }

    zvxtest::TemporaryFolder folder;
    ParcelBook parcels;
    TestMarket market;
    TestCarrier carrier;
    ManualClock clock{TimeMs(1'577'851'200'000)};
    CountingRandom random;
    DeliveryLimits limits;
    DeliveryCounters counters;
    std::vector<std::string> notices;
    std::vector<std::string> faults;
    std::optional<DeliveryOffice> office;
    int answers = 0;
    Outcome last;
};

TEST_F(DeliveryOfficeTest, GoodsAreFrozenThenHandedOverThenGone)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    EXPECT_EQ(market.holding(1), "10/3");
    EXPECT_EQ(carrier.takeLog(), "ask 2 岁寒三友 3 林晓月\n");
    EXPECT_EQ(parcels.find(idOf(2))->recipient.address, "和平路1号");
    say(2, DeliveryStage::Preparing);
    EXPECT_EQ(carrier.takeLog(), "go ahead 2\n");
    EXPECT_EQ(cancel(1, 2, 9), "delivery-done");
    EXPECT_EQ(carrier.takeLog(), "");
    say(2, DeliveryStage::Sent);
    EXPECT_EQ(market.holding(1), "7/0");
    EXPECT_EQ(parcels.find(idOf(2))->tracking.number, "T1");
    EXPECT_EQ(office->underWay(), 0u);
    say(2, DeliveryStage::Sent);
    say(2, DeliveryStage::Refused);
    EXPECT_EQ(market.holding(1), "7/0") << "the first word counts";
    EXPECT_EQ(counters.sent, 1u);
}

TEST_F(DeliveryOfficeTest, WhatIsTakenBackOrRefusedIsThereAgain)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    EXPECT_EQ(request(1, 2, 2), "ok 4");
    EXPECT_EQ(cancel(1, 2, 3), "ok 0");
    EXPECT_EQ(carrier.takeLog(), "ask 2 岁寒三友 3 林晓月\nask 4 岁寒三友 2 林晓月\ngive up 2\n");
    say(4, DeliveryStage::Refused);
    EXPECT_EQ(market.holding(1), "10/0");
    EXPECT_EQ(counters.cancelled, 1u);
    EXPECT_EQ(counters.refusedByCarrier, 1u);
    say(2, DeliveryStage::Preparing);
    say(2, DeliveryStage::Sent);
    EXPECT_EQ(carrier.takeLog(), "") << "a parcel that was taken back does not go ahead";
    EXPECT_EQ(market.holding(1), "10/0");
    EXPECT_EQ(cancel(1, 2, 3), "ok 0") << "the same answer to the same key";
    EXPECT_EQ(cancel(1, 2, 4), "delivery-done");
    EXPECT_EQ(counters.cancelled, 1u);
}

TEST_F(DeliveryOfficeTest, ARequestThatIsRefusedLeavesNoRecipient)
{
    EXPECT_EQ(request(1, 11, 1), "holdings");
    EXPECT_EQ(request(1, 0, 2), "quantity");
    EXPECT_EQ(request(1, 1, 3, 8), "unknown-collection");
    EXPECT_EQ(request(5, 1, 4), "holdings");
    EXPECT_EQ(request(1, 11, 1), "holdings") << "the same answer to the same key";
    EXPECT_EQ(parcelCount(), 0u);
    EXPECT_EQ(carrier.takeLog(), "");
    EXPECT_EQ(market.holding(1), "10/0");
}

TEST_F(DeliveryOfficeTest, ARequestThatIsRefusedWaitsForTheDiskOnce)
{
    EXPECT_EQ(request(1, 1, 1), "ok 2");
    const int before = zvxtest::syncs();
    EXPECT_EQ(request(1, 1, 2), "ok 4");
    const int ofAccepted = zvxtest::syncs() - before;
    EXPECT_GT(ofAccepted, 0);
    EXPECT_EQ(request(1, 100, 3), "holdings");
    EXPECT_EQ(zvxtest::syncs() - before, 2 * ofAccepted);
    EXPECT_EQ(parcelCount(), 2u);
    EXPECT_EQ(request(1, 1, 4), "ok 8");
    EXPECT_EQ(zvxtest::syncs() - before, 3 * ofAccepted) << "others wait for it as before";
}

TEST_F(DeliveryOfficeTest, KeysOfMoneyAreNoCancels)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    market.pay(7);
    EXPECT_EQ(resolve(1, 7), "key-differs");
    EXPECT_EQ(cancel(1, 2, 7), "key-differs");
    EXPECT_EQ(resolve(2, 7), "unknown-key") << "keys are an account's own";
    EXPECT_EQ(market.holding(1), "10/3");
}

TEST_F(DeliveryOfficeTest, OneKeyAsksOnce)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    EXPECT_EQ(request(1, 4, 1), "key-differs");
    EXPECT_EQ(request(1, 3, 1, {"林晓阳", someone.phone, someone.address}), "key-differs");
    EXPECT_EQ(request(1, 3, 1, {someone.person, "13900000002", someone.address}), "key-differs");
    EXPECT_EQ(request(1, 3, 1, {someone.person, someone.phone, "和平路2号"}), "key-differs");
    EXPECT_EQ(cancel(1, 2, 1), "key-differs");
    EXPECT_EQ(resolve(1, 1), "ok 2");
    EXPECT_EQ(market.holding(1), "10/3");
    EXPECT_EQ(parcelCount(), 1u);
    EXPECT_EQ(resolve(1, 5), "unknown-key");
    EXPECT_EQ(request(1, 1, 5), "unknown-key");
    EXPECT_EQ(parcelCount(), 1u);
    EXPECT_EQ(cancel(1, 2, 6), "ok 0");
    EXPECT_EQ(resolve(1, 6), "ok 0") << "a cancel is known by its key";
}

TEST_F(DeliveryOfficeTest, ParcelsOfOthersAreNotThere)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    EXPECT_EQ(cancel(2, 2, 2), "unknown-delivery");
    EXPECT_EQ(cancel(1, 99, 3), "unknown-delivery");
    EXPECT_EQ(market.holding(1), "10/3");
    EXPECT_EQ(request(2, 3, 1), "ok 4") << "keys are an account's own";
}

TEST_F(DeliveryOfficeTest, ASilentCarrierIsAskedAgain)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    carrier.takeLog();
    clock.advance(limits.askAgainEvery - 1);
    office->tick();
    EXPECT_EQ(carrier.takeLog(), "");
    clock.advance(1);
    EXPECT_EQ(office->due(), clock.steady());
    office->tick();
    EXPECT_EQ(carrier.takeLog(), "ask 2 岁寒三友 3 林晓月\n");
    say(2, DeliveryStage::Preparing);
    EXPECT_EQ(carrier.takeLog(), "go ahead 2\n");
    clock.advance(limits.askAgainEvery);
    office->tick();
    EXPECT_EQ(carrier.takeLog(), "ask 2 岁寒三友 3 林晓月\n") << "until it is over";
    say(2, DeliveryStage::Sent);
    clock.advance(limits.askAgainEvery);
    office->tick();
    EXPECT_EQ(carrier.takeLog(), "");
    EXPECT_FALSE(office->due());
}

TEST_F(DeliveryOfficeTest, TheMarketHearsOfEachStepOnce)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    say(2, DeliveryStage::Preparing);
    const int commands = market.commands;
    carrier.takeLog();
    say(2, DeliveryStage::Preparing);
    EXPECT_EQ(market.commands, commands);
    EXPECT_EQ(carrier.takeLog(), "go ahead 2\n") << "it may have been lost";
    restart();
    carrier.takeLog();
    say(2, DeliveryStage::Preparing);
    EXPECT_EQ(market.commands, commands);
    EXPECT_EQ(carrier.takeLog(), "go ahead 2\n");
    say(2, DeliveryStage::Sent);
    EXPECT_EQ(market.commands, commands + 1);
    EXPECT_EQ(market.holding(1), "7/0");
}

TEST_F(DeliveryOfficeTest, AStartLooksThroughTheMarketOnce)
{
    for (std::uint64_t key = 1; key <= 5; ++key)
        EXPECT_EQ(request(1, 1, key), "ok " + std::to_string(2 * key));
    parcels.put({8, 8}, market.prefix(), someone);
    parcels.put({8, 9}, "/lc/other/", someone);
    market.looks = 0;
    restart();
    EXPECT_EQ(market.looks, 1);
    EXPECT_EQ(parcelCount(), 5u);
    EXPECT_FALSE(parcels.find({8, 8}));
    EXPECT_TRUE(parcels.find({8, 9})) << "of another market";
}

TEST_F(DeliveryOfficeTest, ARestartGoesOnWithWhatIsUnderWay)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    EXPECT_EQ(request(2, 2, 1), "ok 4");
    EXPECT_EQ(request(2, 1, 2), "ok 6");
    say(4, DeliveryStage::Sent);
    say(6, DeliveryStage::Preparing);
    carrier.takeLog();
    restart();
    EXPECT_EQ(carrier.takeLog(), "ask 2 岁寒三友 3 林晓月\nask 6 岁寒三友 1 林晓月\n");
    say(6, DeliveryStage::Preparing);
    EXPECT_EQ(carrier.takeLog(), "go ahead 6\n") << "as it does not know that it may";
    say(6, DeliveryStage::Sent);
    EXPECT_EQ(market.holding(2), "7/0");
    EXPECT_EQ(parcelCount(), 3u) << "who received what stays to be read";
}

TEST_F(DeliveryOfficeTest, ADeathBetweenTwoStepsLosesNothingAndSendsNothingTwice)
{
    market.next = TestMarket::BeforeCommit;
    EXPECT_THROW(request(1, 3, 1), Crash);
    EXPECT_EQ(parcelCount(), 1u);
    restart();
    EXPECT_EQ(parcelCount(), 0u) << "nobody asked for it";
    EXPECT_EQ(carrier.takeLog(), "");
    answers = 0;
    market.next = TestMarket::AfterCommit;
    EXPECT_THROW(request(1, 3, 2), Crash);
    restart();
    EXPECT_EQ(parcelCount(), 1u);
    EXPECT_EQ(carrier.takeLog(), "ask 4 岁寒三友 3 林晓月\n");
    answers = 0;
    EXPECT_EQ(resolve(1, 2), "ok 4");
    EXPECT_EQ(request(1, 3, 2), "ok 4");
    EXPECT_EQ(market.holding(1), "10/3");
    market.next = TestMarket::AfterCommit;
    EXPECT_THROW(say(4, DeliveryStage::Sent), Crash);
    EXPECT_EQ(market.holding(1), "7/0");
    restart();
    EXPECT_EQ(carrier.takeLog(), "") << "it is over";
    EXPECT_EQ(parcels.find(idOf(4))->tracking.number, "T1");
}

TEST_F(DeliveryOfficeTest, AMarketThatEndedFailsAndIsAskedByItsNextRun)
{
    market.next = TestMarket::Ended;
    EXPECT_EQ(request(1, 3, 1), "failed");
    EXPECT_EQ(request(1, 3, 2), "ok 4");
    market.next = TestMarket::Ended;
    EXPECT_EQ(cancel(1, 4, 3), "failed");
    market.next = TestMarket::Ended;
    EXPECT_EQ(resolve(1, 9), "failed");
    market.next = TestMarket::Ended;
    say(4, DeliveryStage::Sent);
    EXPECT_EQ(market.holding(1), "10/3");
    EXPECT_EQ(office->underWay(), 1u);
    EXPECT_EQ(faults, std::vector<std::string>(4, "ended")) << "the operator hears of each";
    say(4, DeliveryStage::Sent);
    EXPECT_EQ(market.holding(1), "7/0");
}

TEST_F(DeliveryOfficeTest, ADeliveryWithoutItsRecipientIsToldToTheOperator)
{
    EXPECT_EQ(request(1, 3, 1), "ok 2");
    parcels.drop(idOf(2));
    EXPECT_EQ(request(1, 3, 1), "ok 2") << "by its key it is known all the same";
    carrier.takeLog();
    restart();
    EXPECT_EQ(carrier.takeLog(), "");
    EXPECT_EQ(notices,
              (std::vector<std::string>{
                  "delivery 1 has no recipient: somebody took it out of the parcels"}));
}

} // namespace
