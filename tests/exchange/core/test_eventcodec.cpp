#include "exchange/core/eventcodec.h"

#include <gtest/gtest.h>

#include <vector>

using namespace zvx;

namespace {

std::vector<Event> oneOfEach()
{
    const TimeMs at(1'577'836'800'000);
    const AccountId a(900'719'925'474);
    const CollectionId c(0x7fffffff);
    return {
        CollectionListed{at, c, Fen(1000), Quantity(5000), PartsPerMillion(100'000), Fen(1),
                         Quantity(1), Fen(900), Fen(1100)},
        CollectionSuspended{at, c, true},
        AccountOpened{at, a, PartsPerMillion(3000)},
        AccountFrozen{at, a, false},
        FeeRateSet{at, a, CollectionId(0), PartsPerMillion(0)},
        CashMoved{at, a, Fen(-kAmountBound), Fen(kAmountBound)},
        HoldingMoved{at, a, c, Quantity(63), Fen(64), Quantity(kAmountBound)},
        OrderAccepted{at, OrderNumber(0x7fffffff), a, c, Side::Sell, Fen(1001), Quantity(7),
                      PartsPerMillion(3000), Fen(0), Fen(0)},
        Deal{at, Sequence(8), c, OrderNumber(1), OrderNumber(2), Side::Buy, a, AccountId(5),
             Fen(1000), Quantity(3), Fen(9), Fen(9), Fen(128)},
        OrderDone{at, OrderNumber(3), a, c, DoneReason::SelfTrade, Quantity(4), Fen(12'345),
                  Quantity(0)},
        ActionAnswered{at, a, ActionKey{0xffffffffffffffffu, 1}, 0x0123456789abcdefu, kLastStatus,
                       OrderNumber(3), 2},
        CollectionSettled{at, c, TradingDay(20'200'101), Sequence(1), Fen(1), Fen(2), Fen(3),
                          Fen(4), Quantity(5), Fen(6), Fen(7), Fen(8), Fen(9)},
        DaySettled{at, TradingDay(20'200'101), Sequence(2)},
        PhaseSet{TimeMs(0), true},
        TransferBegun{at, TransferNumber(kAmountBound), a, true, Fen(kAmountBound), Fen(64),
                      TransferId{1, 0xffffffffffffffffu}, 0x0123456789abcdefu, ActionKey{}},
        TransferEnded{at, TransferNumber(128), a, false, Fen(1), true, Fen(0)},
        DeliveryRequested{at, DeliveryNumber(kAmountBound), a, c, Quantity(64),
                          ParcelId{1, 0xffffffffffffffffu}, ActionKey{}},
        DeliveryMoved{at, DeliveryNumber(128), a, c, Quantity(1), kLastStage, Fen(kAmountBound)},
    };
}

} // namespace

TEST(EventCodec, EveryKindComesBackTheSame)
{
    const std::vector<Event> events = oneOfEach();
    ASSERT_EQ(events.size(), std::variant_size_v<Event>);
    std::string bytes;
    for (std::size_t i = 0; i < events.size(); ++i) {
        EXPECT_EQ(events[i].index(), i);
        encode(events[i], bytes);
    }
    std::string_view rest = bytes;
    for (const Event &event : events) {
        Event back;
        ASSERT_TRUE(decode(rest, back));
        EXPECT_EQ(describe(back), describe(event));
        EXPECT_TRUE(sameEvent(back, event));
    }
    EXPECT_TRUE(rest.empty());
    EXPECT_FALSE(sameEvent(events[0], events[1]));
}

TEST(EventCodec, TheBytesOfADealStay)
{
    // Stored files have this form: a change needs another version.
    std::string bytes;
    encode(Deal{TimeMs(5), Sequence(300), CollectionId(7), OrderNumber(1), OrderNumber(2),
                Side::Sell, AccountId(3), AccountId(4), Fen(-1), Quantity(64), Fen(0), Fen(1),
                Fen(2)},
           bytes);
    EXPECT_EQ(
        bytes,
        std::string("\x01\x08\x05\xac\x02\x07\x01\x02\x01\x03\x04\x01\x80\x01\x00\x02\x04", 17));
}

TEST(EventCodec, TheBytesOfATransferStay)
{
    std::string bytes;
    encode(TransferBegun{TimeMs(5), TransferNumber(300), AccountId(3), false, Fen(64), Fen(1),
                         TransferId{1, 2}, 3, ActionKey{4, 5}},
           bytes);
    encode(
        TransferEnded{TimeMs(6), TransferNumber(300), AccountId(3), false, Fen(64), true, Fen(0)},
        bytes);
    const std::string zeros(7, '\0');
    EXPECT_EQ(bytes,
              "\x01\x0e\x05\xac\x02\x03" + std::string("\0", 1) + "\x80\x01\x02\x01" + zeros
                  + "\x02" + zeros + "\x03" + zeros + "\x04" + zeros + "\x05" + zeros
                  + "\x01\x0f\x06\xac\x02\x03" + std::string("\0", 1) + "\x80\x01\x01"
                  + std::string("\0", 1));
}

TEST(EventCodec, TheBytesOfADeliveryStay)
{
    std::string bytes;
    encode(DeliveryRequested{TimeMs(5), DeliveryNumber(300), AccountId(3), CollectionId(7),
                             Quantity(64), ParcelId{1, 2}, ActionKey{4, 5}},
           bytes);
    encode(DeliveryMoved{TimeMs(6), DeliveryNumber(300), AccountId(3), CollectionId(7),
                         Quantity(64), DeliveryStage::Sent, Fen(1)},
           bytes);
    const std::string zeros(7, '\0');
    EXPECT_EQ(bytes,
              "\x01\x10\x05\xac\x02\x03\x07\x80\x01\x01" + zeros + "\x02" + zeros + "\x04" + zeros
                  + "\x05" + zeros + "\x01\x11\x06\xac\x02\x03\x07\x80\x01\x02\x02");
}

TEST(EventCodec, CutBytesAreRefusedAndLeaveEverythingAsItWas)
{
    for (const Event &event : oneOfEach()) {
        std::string bytes;
        encode(event, bytes);
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            const std::string cut = bytes.substr(0, length);
            std::string_view view = cut;
            Event out = PhaseSet{TimeMs(77), false};
            ASSERT_FALSE(decode(view, out)) << describe(event) << " cut to " << length;
            EXPECT_EQ(view.size(), length);
            EXPECT_TRUE(sameEvent(out, PhaseSet{TimeMs(77), false}));
        }
    }
}

TEST(EventCodec, WhatEncodeWouldNotWriteIsRefused)
{
    using namespace std::string_literals;
    const struct {
        const char *what;
        std::string bytes;
    } table[] = {
        {"another version", "\x02\x0d\x00\x01"s},
        {"an unknown kind", "\x01\x12\x00\x01"s},
        {"a truth that is neither", "\x01\x0d\x00\x02"s},
        {"a number in a longer form", "\x01\x0d\x80\x00\x01"s},
        {"a number of eleven bytes", "\x01\x0d\x81\x80\x80\x80\x80\x80\x80\x80\x80\x80\x00\x01"s},
        {"a number beyond 64 bits", "\x01\x0d\xff\xff\xff\xff\xff\xff\xff\xff\xff\x02\x01"s},
        {"a time beyond its range", "\x01\x0d\xff\xff\xff\xff\xff\xff\xff\x7f\x01"s},
        {"a day before its range", "\x01\x0c\x00\x01\x01"s},
        {"a side that is none", "\x01\x07\x00\x01\x01\x01\x02\x02\x02\x00\x00\x00"s},
    };
    for (const auto &row : table) {
        std::string_view view = row.bytes;
        Event out;
        EXPECT_FALSE(decode(view, out)) << row.what;
    }
    std::string_view good("\x01\x0d\x00\x01", 4);
    Event out;
    EXPECT_TRUE(decode(good, out)) << "the row that the others vary is itself wrong";
}

TEST(EventCodec, ChangedBytesNeverCrashAndDecodeOnlyInTheirOneForm)
{
    std::uint64_t state = 1;
    const auto next = [&state](std::size_t bound) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::size_t>((state >> 33) % bound);
    };
    const std::vector<Event> events = oneOfEach();
    int decoded = 0;
    int refused = 0;
    for (int round = 0; round < 60'000; ++round) {
        std::string bytes;
        encode(events[next(events.size())], bytes);
        for (std::size_t changes = 1 + next(3); changes > 0; --changes) {
            switch (next(4)) {
            case 0:
                bytes[next(bytes.size())] = static_cast<char>(next(256));
                break;
            case 1:
                bytes[next(bytes.size())] ^= static_cast<char>(1u << next(8));
                break;
            case 2:
                bytes.insert(next(bytes.size()), 1, static_cast<char>(next(256)));
                break;
            default:
                bytes.erase(next(bytes.size()), 1);
                break;
            }
        }
        std::string_view view = bytes;
        Event out;
        if (decode(view, out)) {
            std::string again;
            encode(out, again);
            ASSERT_EQ(again, bytes.substr(0, bytes.size() - view.size()));
            ++decoded;
        } else {
            ++refused;
        }
    }
    EXPECT_GT(decoded, 1000);
    EXPECT_GT(refused, 1000);
}
