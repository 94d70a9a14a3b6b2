#include "exchange/core/slow_market.h"

#include <algorithm>

using zvx::Result;
using zvx::Status;
using Int = std::int64_t;
__extension__ typedef __int128 Big;

namespace {

constexpr Int kBound = 9'000'000'000'000'000;
constexpr Int kTooHigh = 13'107'200;
constexpr const char *kBurnt = "burnt";

Result say(Status status)
{
    Result result;
    result.status = status;
    return result;
}

Int rounded(Int amount, Int rate)
{
    const Big product = Big(amount) * rate;
    const Int whole = Int(product / 1'000'000);
    return product % 1'000'000 * 2 >= 1'000'000 ? whole + 1 : whole;
}

template <class... Parts>
std::string text(Parts... parts)
{
    std::string line;
    ((line += std::to_string(parts), line += ' '), ...);
    return line;
}

} // namespace

SlowMarket::SlowMarket(Int day, Bounds bounds) : m_day(day), m_bounds(bounds) { }

Result SlowMarket::apply(const zvx::Command &command)
{
    m_trades.clear();
    return std::visit([this](const auto &body) { return run(body); }, command);
}

Int SlowMarket::Order::traded() const
{
    Int sum = 0;
    for (const auto &fill : fills)
        sum += fill.second;
    return sum;
}

Int SlowMarket::Order::amount() const
{
    Int sum = 0;
    for (const auto &fill : fills)
        sum += fill.first * fill.second;
    return sum;
}

Int SlowMarket::Order::feeOf(Int sum) const
{
    const Int fee = rounded(sum, rate);
    return buy ? std::min(fee, cap) : fee;
}

Int SlowMarket::Order::frozenMoney() const
{
    if (!open || !buy)
        return 0;
    const Int rest = left() * price;
    return rest + feeOf(amount() + rest) - feeOf(amount());
}

Int SlowMarket::Collection::lower() const
{
    return std::max<Int>(1, close - rounded(close, limit));
}

Int SlowMarket::Collection::upper() const
{
    return std::min<Int>(kTooHigh - 1, close + rounded(close, limit));
}

Int SlowMarket::frozen(Int account) const
{
    Int sum = 0;
    for (const auto &[number, order] : m_orders)
        sum += order.account == account ? order.frozenMoney() : 0;
    for (const auto &[number, transfer] : m_transfers) {
        if (transfer.waiting && !transfer.incoming && transfer.account == account)
            sum += transfer.amount;
    }
    return sum;
}

Int SlowMarket::available(Int account) const
{
    Int sum = 0;
    for (const Int amount : m_accounts.at(account).moved)
        sum += amount;
    for (const auto &[number, order] : m_orders) {
        if (order.account != account)
            continue;
        const Int amount = order.amount();
        sum += (order.buy ? -amount : amount) - order.feeOf(amount);
    }
    return sum - frozen(account);
}

Int SlowMarket::held(Int account, Int collection) const
{
    Int sum = 0;
    for (const auto &change : m_accounts.at(account).pieces)
        sum += change.first == collection ? change.second.first : 0;
    return sum;
}

Int SlowMarket::frozenPieces(Int account, Int collection) const
{
    Int sum = 0;
    for (const auto &[number, order] : m_orders) {
        if (order.open && !order.buy && order.account == account && order.collection == collection)
            sum += order.left();
    }
    for (const auto &[number, delivery] : m_deliveries) {
        if (delivery.underWay() && delivery.account == account && delivery.collection == collection)
            sum += delivery.quantity;
    }
    return sum;
}

Int SlowMarket::cost(Int account, Int collection) const
{
    Int pieces = 0;
    Int sum = 0;
    for (const auto &[where, change] : m_accounts.at(account).pieces) {
        if (where != collection)
            continue;
        if (change.first < 0)
            sum -= Int(Big(sum) * -change.first / pieces);
        else
            sum += change.second;
        pieces += change.first;
    }
    return sum;
}

Int SlowMarket::openOrders(Int account) const
{
    return std::count_if(m_orders.begin(), m_orders.end(), [account](const auto &entry) {
        return entry.second.open && entry.second.account == account;
    });
}

Int SlowMarket::circulating(Int collection) const
{
    Int sum = 0;
    for (const auto &entry : m_accounts)
        sum += held(entry.first, collection);
    return sum;
}

Int SlowMarket::sent(Int collection) const
{
    Int sum = 0;
    for (const auto &[number, delivery] : m_deliveries)
        sum += delivery.where == Delivery::Gone && delivery.collection == collection
            ? delivery.quantity
            : 0;
    return sum;
}

Result SlowMarket::run(const zvx::ListCollection &command)
{
    const Int id = command.collection.value();
    if (id < 1 || id > 0x7fffffff)
        return say(Status::CollectionUnknown);
    if (m_collections.count(id) > 0)
        return say(Status::AlreadyThere);
    const Int close = command.previousClose.value();
    const Int tick = command.tick.value();
    if (close < 1 || close >= kTooHigh || tick < 1 || tick >= kTooHigh || close % tick != 0)
        return say(Status::BadPrice);
    if (command.lot.value() < 1 || command.lot.value() > kBound || command.issued.value() < 0
        || command.issued.value() > kBound)
        return say(Status::BadQuantity);
    if (command.limit.value() < 0 || command.limit.value() >= 1'000'000)
        return say(Status::BadRate);
    Collection collection;
    collection.issued = command.issued.value();
    collection.limit = command.limit.value();
    collection.tick = tick;
    collection.lot = command.lot.value();
    collection.close = close;
    m_collections[id] = collection;
    return {};
}

Result SlowMarket::run(const zvx::SuspendCollection &command)
{
    const auto found = m_collections.find(command.collection.value());
    if (found == m_collections.end())
        return say(Status::CollectionUnknown);
    found->second.suspended = command.suspended;
    return {};
}

Result SlowMarket::run(const zvx::OpenAccount &command)
{
    const Int id = command.account.value();
    if (id < 1 || id > kBound)
        return say(Status::AccountUnknown);
    if (m_accounts.count(id) > 0)
        return say(Status::AlreadyThere);
    Account account;
    account.rate = command.fee.value();
    if (account.rate < 0 || account.rate > 100'000)
        return say(Status::BadRate);
    for (const auto &[collection, rate] : command.rates) {
        if (rate.value() < 0 || rate.value() > 100'000)
            return say(Status::BadRate);
        if (collection.value() < 1 || collection.value() > 0x7fffffff)
            return say(Status::CollectionUnknown);
        account.rates[collection.value()] = rate.value();
    }
    m_accounts[id] = account;
    return {};
}

Result SlowMarket::run(const zvx::FreezeAccount &command)
{
    const auto found = m_accounts.find(command.account.value());
    if (found == m_accounts.end())
        return say(Status::AccountUnknown);
    found->second.frozen = command.frozen;
    return {};
}

Result SlowMarket::run(const zvx::SetFeeRate &command)
{
    const auto found = m_accounts.find(command.account.value());
    if (found == m_accounts.end())
        return say(Status::AccountUnknown);
    const Int collection = command.collection.value();
    if (collection < 0 || collection > 0x7fffffff)
        return say(Status::CollectionUnknown);
    if (command.fee.value() < 0 || command.fee.value() > 100'000)
        return say(Status::BadRate);
    (collection == 0 ? found->second.rate : found->second.rates[collection]) = command.fee.value();
    return {};
}

template <class Command>
Result SlowMarket::keyed(const Command &command, const std::string &content, bool freeing)
{
    const Int id = command.account.value();
    const auto account = m_accounts.find(id);
    if (account == m_accounts.end())
        return say(Status::AccountUnknown);
    const bool hasKey = command.key.high != 0 || command.key.low != 0;
    const Key key(command.key.high, command.key.low);
    if (hasKey) {
        const auto known = m_answers[id].find(key);
        if (known != m_answers[id].end()) {
            if (known->second.content == kBurnt)
                return say(Status::KeyBurnt);
            if (known->second.content != content)
                return say(Status::KeyDiffers);
            Result again = known->second.result;
            again.first = again.status;
            again.status = Status::Exists;
            again.transfer = {};
            again.delivery = {};
            return again;
        }
        if (Int(m_answers[id].size()) >= m_bounds.keysOfAccount)
            return say(Status::TooManyActions);
    }
    const Result result = account->second.frozen ? say(Status::AccountFrozen) : carryOut(command);
    if (hasKey && (result.status == Status::Accepted || !freeing))
        m_answers[id][key] = {result, content, m_session};
    return result;
}

Result SlowMarket::run(const zvx::Deposit &c)
{
    return keyed(c, "deposit " + text(c.amount.value()), false);
}

Result SlowMarket::run(const zvx::Withdraw &c)
{
    return keyed(c, "withdraw " + text(c.amount.value()), false);
}

Result SlowMarket::run(const zvx::GrantHolding &c)
{
    return keyed(c, "grant " + text(c.collection.value(), c.quantity.value(), c.unitCost.value()),
                 false);
}

Result SlowMarket::run(const zvx::PlaceOrder &c)
{
    return keyed(
        c, "order " + text(c.collection.value(), int(c.side), c.price.value(), c.quantity.value()),
        c.refusalFreesKey);
}

Result SlowMarket::run(const zvx::BeginTransfer &c)
{
    if (c.bank.high == 0 && c.bank.low == 0)
        return say(Status::BadKey);
    return keyed(c, (c.incoming ? "in " : "out ") + text(c.amount.value()), false);
}

Result SlowMarket::carryOut(const zvx::BeginTransfer &command)
{
    const Int id = command.account.value();
    const Int amount = command.amount.value();
    if (command.ruling != Status::Accepted)
        return say(command.ruling);
    if (amount < 1 || amount > (command.incoming ? roomForMoney() : kBound))
        return say(Status::BadAmount);
    if (!command.incoming && amount > available(id))
        return say(Status::NotEnoughMoney);
    Int waiting = 0;
    for (const auto &[number, transfer] : m_transfers)
        waiting += transfer.waiting && transfer.account == id ? 1 : 0;
    if (waiting >= m_bounds.transfersOfAccount)
        return say(Status::TooManyTransfers);
    const Int number = Int(m_transfers.size()) + 1;
    m_transfers[number] = {id, command.incoming, amount, true};
    Result result;
    result.transfer = zvx::TransferNumber(number);
    return result;
}

Result SlowMarket::run(const zvx::EndTransfer &c)
{
    const auto found = m_transfers.find(c.transfer.value());
    if (found == m_transfers.end())
        return say(Status::TransferUnknown);
    Transfer &transfer = found->second;
    if (!transfer.waiting)
        return say(Status::TransferDone);
    transfer.waiting = false;
    if (c.done)
        m_accounts[transfer.account].moved.push_back(transfer.incoming ? transfer.amount
                                                                       : -transfer.amount);
    Result result;
    result.transfer = c.transfer;
    return result;
}

Result SlowMarket::run(const zvx::RequestDelivery &c)
{
    if (c.parcel.high == 0 && c.parcel.low == 0)
        return say(Status::BadKey);
    return keyed(c, "deliver " + text(c.collection.value(), c.quantity.value()), false);
}

Result SlowMarket::carryOut(const zvx::RequestDelivery &command)
{
    const Int id = command.account.value();
    const Int collection = command.collection.value();
    const Int quantity = command.quantity.value();
    if (m_collections.count(collection) == 0)
        return say(Status::CollectionUnknown);
    if (quantity < 1 || quantity > 100'000'000)
        return say(Status::BadQuantity);
    if (quantity > held(id, collection) - frozenPieces(id, collection))
        return say(Status::NotEnoughHoldings);
    Int underWay = 0;
    for (const auto &[number, delivery] : m_deliveries)
        underWay += delivery.underWay() && delivery.account == id ? 1 : 0;
    if (underWay >= m_bounds.deliveriesOfAccount)
        return say(Status::TooManyDeliveries);
    const Int number = Int(m_deliveries.size()) + 1;
    m_deliveries[number] = {id, collection, quantity, Delivery::Asked};
    Result result;
    result.delivery = zvx::DeliveryNumber(number);
    return result;
}

Result SlowMarket::run(const zvx::CancelDelivery &c)
{
    return keyed(c, "keep " + text(c.delivery.value()), false);
}

Result SlowMarket::carryOut(const zvx::CancelDelivery &command)
{
    const auto found = m_deliveries.find(command.delivery.value());
    if (found == m_deliveries.end())
        return say(Status::DeliveryUnknown);
    Delivery &delivery = found->second;
    if (!delivery.underWay())
        return say(Status::DeliveryDone);
    if (delivery.account != command.account.value())
        return say(Status::DeliveryUnknown);
    if (delivery.where != Delivery::Asked)
        return say(Status::DeliveryDone);
    delivery.where = Delivery::Back;
    Result result;
    result.delivery = command.delivery;
    return result;
}

Result SlowMarket::run(const zvx::AdvanceDelivery &c)
{
    const auto found = m_deliveries.find(c.delivery.value());
    if (found == m_deliveries.end())
        return say(Status::DeliveryUnknown);
    Delivery &delivery = found->second;
    const bool packs = c.stage == zvx::DeliveryStage::Preparing;
    const bool sends = c.stage == zvx::DeliveryStage::Sent;
    const bool gives = c.stage == zvx::DeliveryStage::Refused;
    if (!delivery.underWay() || !(packs || sends || gives)
        || (packs && delivery.where == Delivery::Packed))
        return say(Status::DeliveryDone);
    delivery.where = packs ? Delivery::Packed : sends ? Delivery::Gone : Delivery::Back;
    if (sends)
        m_accounts[delivery.account].pieces.push_back(
            {delivery.collection, {-delivery.quantity, 0}});
    Result result;
    result.delivery = c.delivery;
    return result;
}

Result SlowMarket::run(const zvx::RevokeOrders &c)
{
    std::string content = "revoke ";
    for (const auto number : c.orders)
        content += text(number.value());
    return keyed(c, content, false);
}

Int SlowMarket::roomForMoney() const
{
    Int room = kBound;
    for (const auto &[id, account] : m_accounts) {
        for (const Int amount : account.moved)
            room -= amount;
    }
    for (const auto &[number, transfer] : m_transfers) {
        if (transfer.waiting && transfer.incoming)
            room -= transfer.amount;
    }
    return room;
}

Result SlowMarket::carryOut(const zvx::Deposit &command)
{
    const Int amount = command.amount.value();
    if (amount < 1 || amount > roomForMoney())
        return say(Status::BadAmount);
    m_accounts[command.account.value()].moved.push_back(amount);
    return {};
}

Result SlowMarket::carryOut(const zvx::Withdraw &command)
{
    const Int amount = command.amount.value();
    if (amount < 1 || amount > kBound)
        return say(Status::BadAmount);
    if (amount > available(command.account.value()))
        return say(Status::NotEnoughMoney);
    m_accounts[command.account.value()].moved.push_back(-amount);
    return {};
}

Result SlowMarket::carryOut(const zvx::GrantHolding &command)
{
    const Int id = command.collection.value();
    const auto found = m_collections.find(id);
    if (found == m_collections.end())
        return say(Status::CollectionUnknown);
    const Int quantity = command.quantity.value();
    if (quantity < 1 || quantity > found->second.issued - circulating(id) - sent(id))
        return say(Status::BadQuantity);
    const Int unit = command.unitCost.value();
    if (unit < 0 || unit >= kTooHigh)
        return say(Status::BadAmount);
    m_accounts[command.account.value()].pieces.push_back({id, {quantity, unit * quantity}});
    return {};
}

Result SlowMarket::carryOut(const zvx::PlaceOrder &command)
{
    if (!m_open)
        return say(Status::MarketClosed);
    const auto found = m_collections.find(command.collection.value());
    if (found == m_collections.end())
        return say(Status::CollectionUnknown);
    const Collection &collection = found->second;
    const Account &account = m_accounts.at(command.account.value());
    if (collection.suspended)
        return say(Status::CollectionSuspended);

    Order order;
    order.number = m_orders.empty() ? 1 : m_orders.rbegin()->first + 1;
    order.account = command.account.value();
    order.collection = command.collection.value();
    order.buy = command.side == zvx::Side::Buy;
    order.price = command.price.value();
    order.quantity = command.quantity.value();
    const auto own = account.rates.find(order.collection);
    order.rate = own == account.rates.end() ? account.rate : own->second;

    if (order.price < collection.lower() || order.price > collection.upper())
        return say(Status::PriceOutsideLimits);
    if (order.price % collection.tick != 0)
        return say(Status::BadTick);
    if (order.quantity < 1 || order.quantity > 100'000'000 || order.quantity % collection.lot != 0)
        return say(Status::BadQuantity);
    if (order.buy) {
        const Int price = order.price * order.quantity;
        const Int fee = rounded(price, order.rate);
        const Int money = available(order.account);
        order.cap = std::min(fee, money - price);
        const Int missing = price + fee - money;
        if (missing > 0 && (missing > (price + fee) / 4'194'304 || missing > fee))
            return say(Status::NotEnoughMoney);
    } else if (order.quantity > held(order.account, order.collection)
                   - frozenPieces(order.account, order.collection)) {
        return say(Status::NotEnoughHoldings);
    }
    if (openOrders(order.account) >= m_bounds.openOrdersOfAccount)
        return say(Status::TooManyOpenOrders);

    m_orders[order.number] = order;
    match(m_orders[order.number]);
    Result result;
    result.order = zvx::OrderNumber(order.number);
    return result;
}

void SlowMarket::match(Order &taker)
{
    Collection &collection = m_collections.at(taker.collection);
    auto &against = taker.buy ? collection.sells : collection.buys;
    while (taker.left() > 0 && !against.empty()) {
        const auto best = taker.buy ? against.begin() : std::prev(against.end());
        if (taker.buy ? best->first > taker.price : best->first < taker.price)
            break;
        Order &maker = m_orders.at(best->second.front());
        if (maker.account == taker.account) {
            close(maker);
            continue;
        }
        Trade trade;
        trade.maker = maker.number;
        trade.taker = taker.number;
        trade.price = maker.price;
        trade.quantity = std::min(maker.left(), taker.left());
        Order &buyer = taker.buy ? taker : maker;
        Order &seller = taker.buy ? maker : taker;
        const Int buyerPaid = buyer.feeOf(buyer.amount());
        const Int sellerPaid = seller.feeOf(seller.amount());
        buyer.fills.push_back({trade.price, trade.quantity});
        seller.fills.push_back({trade.price, trade.quantity});
        trade.buyerFee = buyer.feeOf(buyer.amount()) - buyerPaid;
        trade.sellerFee = seller.feeOf(seller.amount()) - sellerPaid;
        m_accounts.at(seller.account).pieces.push_back({taker.collection, {-trade.quantity, 0}});
        m_accounts.at(buyer.account)
            .pieces.push_back({taker.collection,
                               {trade.quantity, trade.price * trade.quantity + trade.buyerFee}});
        collection.deals.push_back({taker.buy, {trade.price, trade.quantity}});
        m_trades.push_back(trade);
        ++m_deals;
        if (maker.left() == 0)
            close(maker);
    }
    if (taker.left() == 0)
        taker.open = false;
    else
        (taker.buy ? collection.buys : collection.sells)[taker.price].push_back(taker.number);
}

void SlowMarket::close(Order &order)
{
    Collection &collection = m_collections.at(order.collection);
    auto &side = order.buy ? collection.buys : collection.sells;
    side[order.price].remove(order.number);
    if (side[order.price].empty())
        side.erase(order.price);
    order.open = false;
}

Status SlowMarket::mayRevoke(Int number, Int account) const
{
    const auto found = m_orders.find(number);
    if (found == m_orders.end())
        return Status::OrderUnknown;
    if (!found->second.open)
        return Status::OrderDone;
    return found->second.account == account ? Status::Accepted : Status::NotYourOrder;
}

Result SlowMarket::carryOut(const zvx::RevokeOrders &command)
{
    const Int account = command.account.value();
    if (command.orders.empty() || command.orders.size() > 1000)
        return say(Status::BadQuantity);
    Result result = say(mayRevoke(command.orders.front().value(), account));
    for (const auto number : command.orders) {
        if (mayRevoke(number.value(), account) != Status::Accepted)
            continue;
        close(m_orders.at(number.value()));
        ++result.revoked;
        result.status = Status::Accepted;
    }
    return result;
}

Result SlowMarket::run(const zvx::SettleDay &command)
{
    if (command.nextDay.value() < m_day || command.nextDay.value() > 99'991'231)
        return say(Status::BadDay);
    for (auto &[number, order] : m_orders) {
        if (order.open)
            close(order);
    }
    for (auto &[id, collection] : m_collections) {
        if (!collection.deals.empty())
            collection.close = collection.deals.back().second.first;
        collection.deals.clear();
    }
    m_day = command.nextDay.value();
    ++m_session;
    for (auto &[account, answers] : m_answers) {
        for (auto at = answers.begin(); at != answers.end();)
            at = at->second.session < m_session - 1 ? answers.erase(at) : std::next(at);
    }
    return {};
}

Result SlowMarket::run(const zvx::SetPhase &command)
{
    m_open = command.open;
    return {};
}

Result SlowMarket::run(const zvx::BurnKey &command)
{
    const Int id = command.account.value();
    if (m_accounts.count(id) == 0)
        return say(Status::AccountUnknown);
    if (command.key.high == 0 && command.key.low == 0)
        return say(Status::BadKey);
    std::map<Key, Answer> &answers = m_answers[id];
    const Key key(command.key.high, command.key.low);
    const auto known = answers.find(key);
    if (known == answers.end() && Int(answers.size()) >= m_bounds.keysOfAccount)
        return say(Status::TooManyActions);
    if (known == answers.end()) {
        answers[key] = {say(Status::KeyBurnt), kBurnt, m_session};
        return say(Status::KeyBurnt);
    }
    Result again = known->second.result;
    if (known->second.content == kBurnt)
        return again;
    again.first = again.status;
    again.status = Status::Exists;
    again.transfer = {};
    again.delivery = {};
    return again;
}

std::string SlowMarket::picture() const
{
    std::string all = "day " + text(m_day, m_session, int(m_open), m_deals) + '\n';
    Int fees = 0;
    for (const auto &[number, order] : m_orders)
        fees += order.feeOf(order.amount());
    all += "fees " + text(fees) + '\n';
    for (const auto &[id, account] : m_accounts) {
        all += "account "
            + text(id, int(account.frozen), account.rate, available(id), frozen(id), openOrders(id))
            + '\n';
        for (const auto &[collection, facts] : m_collections) {
            const Int pieces = held(id, collection);
            if (pieces != 0)
                all += "holding "
                    + text(collection, pieces, frozenPieces(id, collection), cost(id, collection))
                    + '\n';
        }
        for (const auto &[number, order] : m_orders) {
            if (order.open && order.account == id)
                all += "order "
                    + text(number, order.collection, int(!order.buy), order.price, order.quantity,
                           order.left(), order.amount(), order.feeOf(order.amount()),
                           order.frozenMoney())
                    + '\n';
        }
    }
    for (const auto &[id, facts] : m_collections) {
        Int high = 0;
        Int low = 0;
        Int volume = 0;
        Int amount = 0;
        Int outer = 0;
        for (const auto &[buying, deal] : facts.deals) {
            high = std::max(high, deal.first);
            low = low == 0 ? deal.first : std::min(low, deal.first);
            volume += deal.second;
            amount += deal.first * deal.second;
            outer += buying ? deal.second : 0;
        }
        const Int open = facts.deals.empty() ? 0 : facts.deals.front().second.first;
        const Int last = facts.deals.empty() ? 0 : facts.deals.back().second.first;
        all += "collection "
            + text(id, int(facts.suspended), circulating(id), sent(id), facts.close, facts.lower(),
                   facts.upper(), open, high, low, last, volume, amount, outer, volume - outer,
                   Int(facts.deals.size()))
            + '\n';
        const auto level = [&](const char *side, Int price, const std::list<Int> &queue) {
            Int quantity = 0;
            for (const Int number : queue)
                quantity += m_orders.at(number).left();
            all += side + text(price, quantity, Int(queue.size())) + '\n';
        };
        for (auto at = facts.buys.rbegin(); at != facts.buys.rend(); ++at)
            level("buys ", at->first, at->second);
        for (const auto &[price, queue] : facts.sells)
            level("sells ", price, queue);
    }
    for (const auto &[number, transfer] : m_transfers) {
        if (transfer.waiting)
            all += "transfer "
                + text(number, transfer.account, int(transfer.incoming), transfer.amount) + '\n';
    }
    for (const auto &[number, delivery] : m_deliveries) {
        if (delivery.underWay())
            all += "delivery "
                + text(number, delivery.account, delivery.collection, delivery.quantity,
                       int(delivery.where))
                + '\n';
    }
    return all;
}
