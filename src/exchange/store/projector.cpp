#include "exchange/store/projector.h"

#include "exchange/core/market.h"

#include <algorithm>
#include <string>

namespace zvx {
namespace {

OrderState endState(DoneReason reason)
{
    switch (reason) {
    case DoneReason::Filled:
        return OrderState::Filled;
    case DoneReason::Revoked:
        return OrderState::Revoked;
    case DoneReason::Ended:
        return OrderState::Ended;
    case DoneReason::SelfTrade:
        return OrderState::SelfTrade;
    }
    throw Damaged("an order ended for an unknown reason");
}

} // namespace

Projector::Projector(const Market &market, const std::optional<CompositeRow> &composite,
                     StoredRows *stored)
    : m_stored(stored), m_session(market.session()), m_composite(market, composite),
      m_charts(market), m_flows(market.day(), stored), m_deliveries(market.day(), stored),
      m_records(market, stored)
{
}

void Projector::take(const Event &event)
{
    if (std::holds_alternative<DaySettled>(event) && m_compositeChanged)
        m_endedComposites.push_back(m_composite.row());
    if (m_composite.take(event))
        m_compositeChanged = true;
    m_charts.take(event);
    m_flows.take(event);
    m_deliveries.take(event);
    m_records.take(event);

    if (const auto *accepted = std::get_if<OrderAccepted>(&event)) {
        OrderRow row;
        row.order = accepted->order;
        row.account = accepted->account;
        row.collection = accepted->collection;
        row.side = accepted->side;
        row.price = accepted->price;
        row.quantity = accepted->quantity;
        row.fee = accepted->fee;
        row.session = m_session;
        row.placedAt = row.changedAt = accepted->at;
        row.frozen = accepted->frozenCash;
        m_records.add(row);
        m_orders[row.order.value()] = row;
        m_touchedOrders.insert(row.order.value());
        m_touchedAccounts.insert(row.account.value());
        m_touchedHoldings.insert({row.account.value(), row.collection.value()});
    } else if (const auto *deal = std::get_if<Deal>(&event)) {
        m_deals.push_back(m_charts.add(*deal));
        m_records.add(m_deals.back());
        fill(deal->maker, *deal, opposite(deal->takerSide));
        fill(deal->taker, *deal, deal->takerSide);
    } else if (const auto *done = std::get_if<OrderDone>(&event)) {
        OrderRow &row = order(done->order);
        row.state = endState(done->reason);
        row.frozen = Fen(0);
        if (done->reason == DoneReason::Revoked)
            m_revoked.push_back(done->order);
        row.changedAt = done->at;
        m_touchedOrders.insert(row.order.value());
        m_touchedAccounts.insert(row.account.value());
        m_touchedHoldings.insert({row.account.value(), row.collection.value()});
    } else if (const auto *opened = std::get_if<AccountOpened>(&event)) {
        m_touchedAccounts.insert(opened->account.value());
    } else if (const auto *frozen = std::get_if<AccountFrozen>(&event)) {
        m_touchedAccounts.insert(frozen->account.value());
    } else if (const auto *answered = std::get_if<ActionAnswered>(&event)) {
        sign(*answered);
    } else if (const auto *rate = std::get_if<FeeRateSet>(&event)) {
        if (rate->collection == CollectionId(0))
            m_touchedAccounts.insert(rate->account.value());
        else
            m_rates[{rate->account.value(), rate->collection.value()}] = rate->fee;
    } else if (const auto *cash = std::get_if<CashMoved>(&event)) {
        m_touchedAccounts.insert(cash->account.value());
    } else if (const auto *begun = std::get_if<TransferBegun>(&event)) {
        m_touchedAccounts.insert(begun->account.value());
    } else if (const auto *ended = std::get_if<TransferEnded>(&event)) {
        m_touchedAccounts.insert(ended->account.value());
    } else if (const auto *moved = std::get_if<HoldingMoved>(&event)) {
        m_touchedHoldings.insert({moved->account.value(), moved->collection.value()});
    } else if (const auto *asked = std::get_if<DeliveryRequested>(&event)) {
        m_touchedHoldings.insert({asked->account.value(), asked->collection.value()});
    } else if (const auto *delivery = std::get_if<DeliveryMoved>(&event)) {
        m_touchedHoldings.insert({delivery->account.value(), delivery->collection.value()});
    } else if (const auto *settled = std::get_if<CollectionSettled>(&event)) {
        m_days.push_back(*settled);
    } else if (const auto *day = std::get_if<DaySettled>(&event)) {
        m_session = day->session;
    }
}

TableUpdate Projector::finish(const Market &market)
{
    TableUpdate update;
    for (const std::int64_t number : m_touchedOrders) {
        const auto found = m_orders.find(number);
        update.orders.push_back(found->second);
        if (found->second.state != OrderState::Open)
            m_orders.erase(found);
    }
    for (const std::int64_t id : m_touchedAccounts) {
        const std::optional<AccountView> view = market.account(AccountId(id));
        if (!view)
            throw Damaged("account " + std::to_string(id) + " has events and is not in the market");
        update.cash.push_back(
            {view->account, view->fee, view->frozen, view->available, view->frozenCash});
    }
    for (const auto &[account, collection] : m_touchedHoldings) {
        HoldingView view = market.holding(AccountId(account), CollectionId(collection));
        view.collection = CollectionId(collection);
        update.holdings.push_back({AccountId(account), view});
    }
    for (const auto &[place, fee] : m_rates)
        update.rates.push_back({AccountId(place.first), CollectionId(place.second), fee});
    update.deals.swap(m_deals);
    m_charts.finish(market, update);
    m_records.finish(market, update);
    update.flows = m_flows.finish();
    update.deliveries = m_deliveries.finish();
    update.days.swap(m_days);
    update.composites.swap(m_endedComposites);
    if (m_compositeChanged)
        update.composites.push_back(m_composite.row());

    m_touchedOrders.clear();
    m_touchedAccounts.clear();
    m_touchedHoldings.clear();
    m_rates.clear();
    m_revoked.clear();
    m_compositeChanged = false;
    return update;
}

OrderRow &Projector::order(OrderNumber number)
{
    const auto found = m_orders.find(number.value());
    if (found != m_orders.end())
        return found->second;
    const std::optional<OrderRow> stored = m_stored ? m_stored->order(number) : std::nullopt;
    if (!stored)
        throw Damaged("order " + std::to_string(number.value()) + " has events and no row");
    return m_orders.emplace(number.value(), *stored).first->second;
}

/// The answer comes last of what an action did: its orders are those that changed just before.
void Projector::sign(const ActionAnswered &answered)
{
    if (answered.order != OrderNumber(0))
        order(answered.order).key = answered.key;
    const auto revoked = std::min(m_revoked.size(), static_cast<std::size_t>(answered.revoked));
    for (auto number = m_revoked.end() - static_cast<std::ptrdiff_t>(revoked);
         number != m_revoked.end(); ++number)
        order(*number).revokeKey = answered.key;
}

void Projector::fill(OrderNumber number, const Deal &deal, Side side)
{
    OrderRow &row = order(number);
    row.filled += deal.quantity;
    row.amount += deal.price * deal.quantity;
    row.fees += side == Side::Buy ? deal.buyerFee : deal.sellerFee;
    if (side == Side::Buy)
        row.frozen -= deal.price * deal.quantity + deal.buyerFee + deal.released;
    row.changedAt = deal.at;
    m_touchedOrders.insert(number.value());
    m_touchedAccounts.insert(row.account.value());
    m_touchedHoldings.insert({row.account.value(), row.collection.value()});
}

} // namespace zvx
