#include "exchange/store/recordprojector.h"

#include <algorithm>
#include <string>

namespace zvx {
namespace {

/// Sums that may grow for ever stop at the bound.
template <class Amount>
void addCapped(Amount &sum, Amount more)
{
    sum = Amount(std::clamp(sum.value() + more.value(), -kAmountBound, kAmountBound));
}

} // namespace

RecordProjector::RecordProjector(const Market &market, StoredRecords *stored)
    : m_stored(stored), m_day(market.day()), m_session(market.session())
{
}

void RecordProjector::take(const Event &event)
{
    if (const auto *moved = std::get_if<HoldingMoved>(&event)) {
        Held &pieces = held(moved->account, moved->collection);
        pieces.quantity = moved->held;
        addCapped(pieces.cost, moved->cost);
    } else if (const auto *delivery = std::get_if<DeliveryMoved>(&event)) {
        if (delivery->stage != DeliveryStage::Sent)
            return;
        Held &pieces = held(delivery->account, delivery->collection);
        pieces.quantity -= delivery->quantity;
        pieces.cost -= delivery->cost;
    } else if (const auto *day = std::get_if<DaySettled>(&event)) {
        m_day = day->day;
        m_session = day->session;
        // What was gathered and not written yet belongs to the session that ended.
        for (const Place &place : m_touchedGathers)
            m_endedGathers.push_back(m_gathers.at(place));
        m_touchedGathers.clear();
        m_gathers.clear();
    }
}

void RecordProjector::add(OrderRow &row)
{
    row.links = append(row.account, RecordList::Orders, row.side, row.order.value());
}

void RecordProjector::add(DealRow &row)
{
    const Deal &deal = row.deal;
    const std::int64_t number = deal.sequence.value();
    if (deal.buyer == deal.seller)
        throw Damaged("account " + std::to_string(deal.buyer.value()) + " dealt with itself");
    row.ofBuyer = append(deal.buyer, RecordList::Deals, Side::Buy, number);
    row.ofSeller = append(deal.seller, RecordList::Deals, Side::Sell, number);
    buy(deal);
    sell(deal);
}

void RecordProjector::finish(const Market &market, TableUpdate &update)
{
    for (const std::int64_t account : m_touchedAccounts)
        update.records.push_back(m_records.at(account));
    update.gathers.swap(m_endedGathers);
    for (const Place &place : m_touchedGathers)
        update.gathers.push_back(m_gathers.at(place));
    for (const auto &[account, collection] : m_touchedHoldings) {
        const HoldingView view = market.holding(AccountId(account), CollectionId(collection));
        const Held &pieces = m_holdings.at({account, collection});
        if (pieces.quantity != view.quantity || pieces.cost != view.cost)
            throw Damaged("account " + std::to_string(account) + " holds other pieces of "
                          + std::to_string(collection) + " than its events come to");
    }
    update.recordDays.swap(m_endedDays);
    update.milestones.swap(m_milestones);
    m_touchedAccounts.clear();
    m_touchedHoldings.clear();
    m_touchedGathers.clear();
}

/// The account's row, brought to the running session.
RecordRow &RecordProjector::recordsOf(AccountId account)
{
    auto found = m_records.find(account.value());
    if (found == m_records.end()) {
        RecordRow row;
        row.account = account;
        row.day = m_day;
        row.session = m_session;
        if (const auto stored = m_stored ? m_stored->records(account) : std::nullopt)
            row = *stored;
        found = m_records.emplace(account.value(), row).first;
    }
    RecordRow &row = found->second;
    if (row.day < m_day)
        m_endedDays.push_back(row);
    if (row.session != m_session) {
        row.day = m_day;
        row.session = m_session;
        row.earlierBuys = row.orders.buys;
        row.earlierSells = row.orders.sells;
    }
    m_touchedAccounts.insert(account.value());
    return row;
}

RecordLinks RecordProjector::append(AccountId account, RecordList list, Side side,
                                    std::int64_t number)
{
    RecordRow &row = recordsOf(account);
    RecordTail &tail = list == RecordList::Orders ? row.orders : row.deals;
    const RecordLinks before = tail.last;
    const bool isBuy = side == Side::Buy;
    ++(isBuy ? tail.buys : tail.sells);
    (isBuy ? tail.last.buy : tail.last.sell) = number;
    for (const auto kind : {isBuy ? RecordPage::Incoming : RecordPage::Outgoing, RecordPage::All}) {
        const std::int64_t place = tail.count(kind);
        if (place % kMilestoneStep == 0)
            m_milestones.push_back({account, list, kind, place, number});
    }
    return before;
}

RecordProjector::Held &RecordProjector::held(AccountId account, CollectionId collection)
{
    const Place place{account.value(), collection.value()};
    m_touchedHoldings.insert(place);
    const auto found = m_holdings.find(place);
    if (found != m_holdings.end())
        return found->second;
    Held pieces;
    if (m_stored) {
        const HoldingView stored = m_stored->holding(account, collection);
        pieces = {stored.quantity, stored.cost};
    }
    return m_holdings.emplace(place, pieces).first->second;
}

GatherRow &RecordProjector::gathered(AccountId account, CollectionId collection)
{
    const Place place{account.value(), collection.value()};
    m_touchedGathers.insert(place);
    const auto found = m_gathers.find(place);
    if (found != m_gathers.end())
        return found->second;
    GatherRow row;
    const auto stored = m_stored ? m_stored->gather(account, collection) : std::nullopt;
    if (stored && stored->session == m_session) {
        row = *stored;
    } else {
        row.account = account;
        row.collection = collection;
        row.session = m_session;
    }
    return m_gathers.emplace(place, row).first->second;
}

void RecordProjector::buy(const Deal &deal)
{
    const Fen amount = deal.price * deal.quantity;
    Held &pieces = held(deal.buyer, deal.collection);
    pieces.quantity += deal.quantity;
    addCapped(pieces.cost, amount + deal.buyerFee);
    GatherRow &sums = gathered(deal.buyer, deal.collection);
    addCapped(sums.buyQuantity, deal.quantity);
    addCapped(sums.buyAmount, amount);
    addCapped(sums.buyFee, deal.buyerFee);
}

void RecordProjector::sell(const Deal &deal)
{
    const Fen amount = deal.price * deal.quantity;
    Held &pieces = held(deal.seller, deal.collection);
    if (pieces.quantity < deal.quantity)
        throw Damaged("a deal of pieces that account " + std::to_string(deal.seller.value())
                      + " does not hold");
    // As the ledger has it: the cost goes with the pieces, what is left keeps its average.
    const Fen paid(
        bounded(Wide(pieces.cost.value()) * deal.quantity.value() / pieces.quantity.value()));
    pieces.cost -= paid;
    pieces.quantity -= deal.quantity;
    GatherRow &sums = gathered(deal.seller, deal.collection);
    addCapped(sums.sellQuantity, deal.quantity);
    addCapped(sums.sellAmount, amount);
    addCapped(sums.sellFee, deal.sellerFee);
    addCapped(sums.sellProfit, amount - deal.sellerFee - paid);
}

} // namespace zvx
