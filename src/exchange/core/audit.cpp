#include "exchange/core/state.h"

#include <string>

// Every invariant, computed anew from the orders. Slow, and independent of what is kept up to date.

namespace zvx {

using core::kNone;
using core::Order;

namespace {

std::string about(const char *kind, std::int64_t id, const char *what)
{
    return std::string(kind) + ' ' + std::to_string(id) + ": " + what;
}

} // namespace

std::optional<std::string> Market::audit() const
{
    if (auto violation = m_state->auditMoney())
        return violation;
    if (auto violation = m_state->auditPieces())
        return violation;
    std::size_t seen = 0;
    for (std::uint32_t book = 0; book < m_state->books.size(); ++book) {
        if (auto violation = m_state->auditBook(book, seen))
            return violation;
    }
    if (seen != m_state->orders.size())
        return std::string("there are open orders that stand in no book");
    return std::nullopt;
}

std::optional<std::string> Market::State::auditMoney() const
{
    if (fees < Fen(0))
        return std::string("the fees earned are negative");
    Wide sum = fees.value();
    std::vector<Wide> payouts(accounts.size());
    std::vector<std::uint32_t> waiting(accounts.size());
    Wide incoming = 0;
    for (const auto &[number, transfer] : transfers) {
        if (transfer.number.value() != number || transfer.number > lastTransfer
            || transfer.amount <= Fen(0) || transfer.account >= accounts.size())
            return about("transfer", number, "without sense");
        (transfer.incoming ? incoming : payouts[transfer.account]) += transfer.amount.value();
        ++waiting[transfer.account];
    }
    if (incoming != promised.value() || outside.value() + incoming > kAmountBound)
        return std::string("a wrong sum of money that is to come in");
    for (const core::Account &account : accounts) {
        const auto fails
            = [&account](const char *what) { return about("account", account.id.value(), what); };
        if (account.available < Fen(0) || account.frozenCash < Fen(0))
            return fails("negative money");
        if (account.fee > kHighestFee)
            return fails("a fee above the highest");
        const auto place = static_cast<std::size_t>(&account - accounts.data());
        Wide frozen = payouts[place];
        std::uint32_t count = 0;
        std::uint32_t previous = kNone;
        for (std::uint32_t at = account.firstOrder; at != kNone; at = orders[at].nextOfAccount) {
            if (orders[at].previousOfAccount != previous
                || &accounts[orders[at].account] != &account)
                return fails("a broken list of orders");
            frozen += orders[at].frozenCash.value();
            ++count;
            previous = at;
        }
        if (account.lastOrder != previous || account.openOrders != count)
            return fails("a wrong number of open orders");
        if (account.transfers != waiting[place])
            return fails("a wrong number of transfers");
        if (frozen != account.frozenCash.value())
            return fails("frozen money differs from what its open orders and transfers froze");
        sum += Wide(account.available.value()) + account.frozenCash.value();
    }
    if (sum != outside.value())
        return std::string("money is not conserved");
    return std::nullopt;
}

std::optional<std::string> Market::State::auditPieces() const
{
    std::vector<Wide> frozen(holdings.size());
    orders.forEach([&](std::uint32_t index) {
        if (orders[index].side == Side::Sell)
            frozen[orders[index].holding] += orders[index].remaining.value();
    });
    std::vector<std::uint32_t> underWay(accounts.size());
    for (const auto &[number, delivery] : deliveries) {
        const std::uint32_t holding
            = delivery.account < accounts.size() && delivery.book < books.size()
            ? findHolding(delivery.account, delivery.book)
            : kNone;
        if (delivery.number.value() != number || delivery.number > lastDelivery
            || delivery.quantity < Quantity(1) || delivery.stage > DeliveryStage::Preparing
            || holding == kNone)
            return about("delivery", number, "without sense");
        frozen[holding] += delivery.quantity.value();
        ++underWay[delivery.account];
    }
    for (std::size_t i = 0; i < accounts.size(); ++i) {
        if (accounts[i].deliveries != underWay[i])
            return about("account", accounts[i].id.value(), "a wrong number of deliveries");
    }
    std::vector<Wide> held(books.size());
    for (std::size_t i = 0; i < holdings.size(); ++i) {
        const core::Holding &holding = holdings[i];
        const auto fails = [&](const char *what) {
            return about("account", accounts[holding.account].id.value(), what);
        };
        if (holding.quantity < Quantity(0) || holding.frozen < Quantity(0)
            || holding.frozen > holding.quantity || holding.cost < Fen(0))
            return fails("a negative holding");
        if (holding.isEmpty() && holding.cost != Fen(0))
            return fails("a cost without pieces");
        if (frozen[i] != holding.frozen.value())
            return fails("frozen pieces differ from what its open orders and deliveries froze");
        held[holding.book] += holding.quantity.value();
    }
    for (std::size_t i = 0; i < books.size(); ++i) {
        const CollectionView &facts = books[i].facts;
        if (held[i] != facts.circulating.value())
            return about("collection", facts.collection.value(), "pieces are not conserved");
        if (facts.sent < Quantity(0) || facts.circulating + facts.sent > facts.issued)
            return about("collection", facts.collection.value(), "more pieces than were issued");
    }
    return std::nullopt;
}

std::optional<std::string> Market::State::auditBook(std::uint32_t index, std::size_t &seen) const
{
    const core::Book &book = books[index];
    const DayFigures &figures = book.facts.day;
    const auto fails = [&book](const char *what) {
        return about("collection", book.facts.collection.value(), what);
    };
    if (figures.lower < Fen(1) || figures.lower > figures.upper || figures.upper >= Fen(kPriceBound)
        || figures.previousClose < Fen(1) || figures.previousClose >= Fen(kPriceBound)
        || book.facts.tick < Fen(1) || book.facts.lot < Quantity(1)
        || book.facts.limit >= PartsPerMillion(1'000'000))
        return fails("impossible rules");
    if (figures.deals < 0 || figures.deals > kAmountBound || figures.volume < Quantity(0)
        || figures.amount < Fen(0) || figures.outer < Quantity(0) || figures.inner < Quantity(0))
        return fails("negative figures");
    if (figures.deals > 0
        && (figures.low > figures.open || figures.low > figures.last || figures.high < figures.open
            || figures.high < figures.last || figures.low < figures.lower
            || figures.high > figures.upper))
        return fails("prices of the day that contradict each other");
    if (figures.volume < Quantity(kAmountBound) && figures.outer + figures.inner != figures.volume)
        return fails("outer and inner volume are not the volume");

    for (const Side side : {Side::Buy, Side::Sell}) {
        const core::PriceLevel *worse = nullptr;
        for (const core::PriceLevel &level : book.side(side)) {
            if (worse && worse->key >= level.key)
                return fails("prices out of order");
            worse = &level;
            Wide quantity = 0;
            std::uint32_t count = 0;
            std::uint32_t previous = kNone;
            for (std::uint32_t at = level.head; at != kNone; at = orders[at].next) {
                const Order &order = orders[at];
                if (order.previous != previous || order.book != index || order.side != side
                    || core::Book::keyOf(side, order.price) != level.key)
                    return fails("a broken queue");
                if (previous != kNone && orders[previous].number >= order.number)
                    return fails("a later order stands before an earlier one");
                if (auto violation = auditOrder(order))
                    return violation;
                quantity += order.remaining.value();
                ++count;
                previous = at;
            }
            if (level.tail != previous || level.orders != count || count == 0
                || quantity != level.quantity.value())
                return fails("a price with wrong sums");
            seen += count;
        }
    }
    const auto &buys = book.side(Side::Buy);
    const auto &sells = book.side(Side::Sell);
    if (!buys.empty() && !sells.empty() && core::Book::cross(buys.back().key, sells.back().key))
        return fails("a crossed book");
    return std::nullopt;
}

std::optional<std::string> Market::State::auditOrder(const Order &order) const
{
    const auto fails = [&order](const char *what) { return about("order", order.number, what); };
    const DayFigures &figures = books[order.book].facts.day;
    if (order.price < figures.lower || order.price > figures.upper)
        return fails("a price outside the limits");
    if (order.remaining < Quantity(1) || order.remaining > order.quantity)
        return fails("a rest without sense");
    if (order.amount < Fen(0) || order.charged < Fen(0) || order.feeCap < Fen(0)
        || order.fee > kHighestFee)
        return fails("negative amounts");
    if (order.charged != order.feeAfter(order.amount))
        return fails("fees that differ from the rate");
    if (order.frozenCash != order.needsFrozen())
        return fails("frozen money that differs from what the rest may cost");
    const std::uint32_t found = orders.find(order.number);
    if (found == kNone || &orders[found] != &order)
        return fails("not found under its number");
    return std::nullopt;
}

} // namespace zvx
