#include "exchange/core/table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

// Clients count what can be bought at most in their own types: a price and money in float, rates in
// double, the cost of a piece rounded up to the cent. What they show has to be taken.

namespace zvx {
namespace {

float yuan(std::int64_t fen)
{
    return static_cast<float>(static_cast<double>(fen) / 100.0);
}

/// The ticket's formula, step by step.
std::int64_t ticketFormula(float price, double rate, float money)
{
    if (!(price > 0))
        return 0;
    const double factor = 1 + rate;
    double unit = price;
    if (std::abs(1 - factor) * 1e12 > std::min(1.0, std::abs(factor))) {
        const auto cents = static_cast<std::int64_t>(std::ceil(price * factor * 100));
        unit = static_cast<double>(cents) / 100.0;
    }
    return static_cast<std::int64_t>(money / unit);
}

std::int64_t shownMaximum(std::int64_t price, std::int64_t ppm, std::int64_t fen)
{
    return ticketFormula(yuan(price), static_cast<double>(ppm) / 1'000'000, yuan(fen));
}

/// What a market says to the order, for an account with that rate and nothing but that money.
Status answerTo(std::int64_t price, std::int64_t ppm, std::int64_t fen, std::int64_t quantity)
{
    Limits limits;
    limits.orderQuantity = Quantity(500'000'000);
    Market market(TradingDay(20'200'101), limits);
    std::vector<Event> events;
    const TimeMs now(0);
    market.apply(SetPhase{true}, now, events);
    market.apply(ListCollection{CollectionId(7), Fen(price), Quantity(0)}, now, events);
    market.apply(OpenAccount{AccountId(1), PartsPerMillion(ppm), {}}, now, events);
    market.apply(Deposit{AccountId(1), Fen(fen), {}}, now, events);
    PlaceOrder order;
    order.account = AccountId(1);
    order.collection = CollectionId(7);
    order.price = Fen(price);
    order.quantity = Quantity(quantity);
    const Result result = market.apply(order, now, events);
    EXPECT_EQ(market.audit().value_or("content"), "content");
    if (result.status == Status::Accepted) {
        // What was taken is reserved to the fen, and comes back to the fen.
        const auto view = market.account(AccountId(1));
        EXPECT_GE(view->available, Fen(0));
        EXPECT_EQ(view->available + view->frozenCash, Fen(fen));
        market.apply(RevokeOrders{AccountId(1), {result.order}, {}}, now, events);
        EXPECT_EQ(market.account(AccountId(1))->available, Fen(fen));
    }
    return result.status;
}

class Chance
{
public:
    explicit Chance(std::uint64_t seed) : m_state(seed) { }

    std::int64_t between(std::int64_t least, std::int64_t most)
    {
        m_state = m_state * 6364136223846793005u + 1442695040888963407u;
        return least
            + static_cast<std::int64_t>((m_state >> 11)
                                        % static_cast<std::uint64_t>(most - least + 1));
    }

private:
    std::uint64_t m_state;
};

class TicketMaximum : public testing::TestWithParam<std::int64_t>
{
protected:
    /// Money about which the count of pieces changes, by the ticket's own cost of a piece: as much
    /// as `pieces` cost, and a little less or more.
    static std::int64_t moneyFor(std::int64_t price, std::int64_t ppm, std::int64_t pieces,
                                 std::int64_t beside)
    {
        const double factor = 1 + static_cast<double>(ppm) / 1'000'000;
        const std::int64_t unit
            = ppm == 0 ? price : static_cast<std::int64_t>(std::ceil(yuan(price) * factor * 100));
        return std::max<std::int64_t>(unit * pieces + beside, 0);
    }
};

TEST_P(TicketMaximum, IsTaken)
{
    const std::int64_t ppm = GetParam();
    Chance chance(static_cast<std::uint64_t>(ppm) + 7);
    // Without a fee there is nothing that could pay for the rounding of a float, see below.
    const std::int64_t mostMoney = ppm == 0 ? 10'991'433 : 1'000'000'000'000;
    int orders = 0;
    int tight = 0;
    for (int round = 0; round < 20'000; ++round) {
        const std::int64_t top = round % 3 == 0 ? 13'107'199 : round % 3 == 1 ? 200'000 : 3'000;
        const std::int64_t price = chance.between(1, top);
        const std::int64_t pieces = chance.between(1, round % 2 == 0 ? 100 : 500'000);
        const std::int64_t fen
            = std::min(moneyFor(price, ppm, pieces, chance.between(-2, 1)), mostMoney);
        const std::int64_t shown = shownMaximum(price, ppm, fen);
        if (shown < 1 || shown > 500'000'000)
            continue;
        ASSERT_EQ(answerTo(price, ppm, fen, shown), Status::Accepted)
            << price << " fen a piece, rate " << ppm << ", money " << fen << ", shown " << shown;
        const Fen rest = Fen(price) * Quantity(shown);
        tight += rest + share(rest, PartsPerMillion(ppm)) > Fen(fen);
        ++orders;
    }
    EXPECT_GT(orders, 10'000);
    if (ppm > 0) {
        EXPECT_GT(tight, 0) << "rounding never mattered, so nothing was tested";
    } else {
        EXPECT_EQ(tight, 0);
    }
}

TEST_P(TicketMaximum, IsTakenAtTheBoundsOfPrices)
{
    const std::int64_t ppm = GetParam();
    for (const std::int64_t price : {1, 2, 99, 100, 101, 1'000, 13'107'198, 13'107'199})
        for (const std::int64_t pieces : {1, 2, 10, 99})
            for (const std::int64_t beside : {-1, 0, 1}) {
                const std::int64_t fen = moneyFor(price, ppm, pieces, beside);
                const std::int64_t shown = shownMaximum(price, ppm, fen);
                if (shown < 1)
                    continue;
                // Money as large as this is out of reach without a fee.
                if (ppm == 0 && fen > 10'991'433 && shown * price > fen)
                    continue;
                EXPECT_EQ(answerTo(price, ppm, fen, shown), Status::Accepted)
                    << price << ' ' << fen << ' ' << shown;
            }
}

INSTANTIATE_TEST_SUITE_P(Rates, TicketMaximum, testing::Values(0, 1'000, 3'000, 12'345),
                         [](const auto &rate) { return "Ppm" + std::to_string(rate.param); });

/// Without a fee each fen counts. The least money that a float rounds to a piece more than it buys
/// is 109,914.34: 1,715 pieces at 64.09 cost a fen more. Nothing is given away for that.
TEST(TicketMaximumWithoutFee, CanBeAFenShortFromSomeMoneyOn)
{
    EXPECT_EQ(shownMaximum(6'409, 0, 10'991'434), 1'715);
    EXPECT_EQ(6'409 * 1'715, 10'991'435);
    EXPECT_EQ(answerTo(6'409, 0, 10'991'434, 1'715), Status::NotEnoughMoney);
    EXPECT_EQ(answerTo(6'409, 0, 10'991'434, 1'714), Status::Accepted);
    EXPECT_EQ(answerTo(6'409, 0, 10'991'435, 1'715), Status::Accepted);
    // Below it, no price and no count of pieces is shown that cannot be paid. A fen less than a
    // number of pieces costs is the money that is rounded up the easiest.
    std::int64_t checked = 0;
    for (std::int64_t price = 1; price < kPriceBound; price += price < 20'000 ? 1 : 97) {
        const std::int64_t most = 10'991'434 / price;
        for (std::int64_t pieces = most; pieces > 0 && pieces > most - 40; --pieces, ++checked)
            ASSERT_LT(shownMaximum(price, 0, price * pieces - 1), pieces) << price;
    }
    EXPECT_GT(checked, 500'000);
}

/// An account whose fee is above the one that a ticket takes for the first row of its list is shown
/// more than it can pay, and is refused.
TEST(TicketMaximumOfAnotherRate, IsNotCovered)
{
    const std::int64_t shown = shownMaximum(1'000, 3'000, 10'030);
    EXPECT_EQ(shown, 10);
    EXPECT_EQ(answerTo(1'000, 12'345, 10'030, shown), Status::NotEnoughMoney);
    EXPECT_EQ(answerTo(1'000, 12'345, 10'030, 9), Status::Accepted);
}

} // namespace
} // namespace zvx
