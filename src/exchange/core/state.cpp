#include "exchange/core/state.h"

#include "exchange/core/faults.h"

#include <algorithm>

// How events change the state. Nothing here asks whether a thing should have happened.

namespace zvx {

using core::kNone;
using core::Order;
using core::pairKey;

namespace {

void must(bool holds, const char *what)
{
    if (!holds)
        throw Damaged(what);
}

/** Sums of figures that may grow for ever stop at the bound. */
template <class Amount>
Amount capped(Amount a, Amount b)
{
    const std::int64_t sum = a.value() + b.value();
    return Amount(std::min(sum, kAmountBound));
}

void trade(DayFigures &day, const Deal &deal)
{
    if (day.deals == 0)
        day.open = day.high = day.low = deal.price;
    day.high = std::max(day.high, deal.price);
    day.low = std::min(day.low, deal.price);
    day.last = deal.price;
    day.volume = capped(day.volume, deal.quantity);
    day.amount = capped(day.amount, deal.price * deal.quantity);
    Quantity &way = deal.takerSide == Side::Buy ? day.outer : day.inner;
    way = capped(way, deal.quantity);
    ++day.deals;
}

bool isPrice(Fen price)
{
    return price >= Fen(1) && price < Fen(kPriceBound);
}

} // namespace

Market::State::State(TradingDay firstDay, const Limits &marketLimits)
    : limits(marketLimits), day(firstDay), actions(marketLimits.keySalt)
{
    // Even the dearest order of this many pieces, with the highest fee, stays within the bounds.
    limits.orderQuantity = std::min(limits.orderQuantity, Quantity(500'000'000));
}

std::uint32_t Market::State::findAccount(AccountId id) const
{
    return accountIndex.find(static_cast<std::uint64_t>(id.value()));
}

std::uint32_t Market::State::findBook(CollectionId id) const
{
    return bookIndex.find(static_cast<std::uint64_t>(id.value()));
}

std::uint32_t Market::State::needAccount(AccountId id) const
{
    const std::uint32_t found = findAccount(id);
    must(found != kNone, "an event of an unknown account");
    return found;
}

std::uint32_t Market::State::needBook(CollectionId id) const
{
    const std::uint32_t found = findBook(id);
    must(found != kNone, "an event of an unknown collection");
    return found;
}

std::uint32_t Market::State::findHolding(std::uint32_t account, std::uint32_t book) const
{
    return holdingIndex.find(pairKey(account, book));
}

std::uint32_t Market::State::ensureHolding(std::uint32_t account, std::uint32_t book)
{
    std::uint32_t found = findHolding(account, book);
    if (found == kNone) {
        found = static_cast<std::uint32_t>(holdings.size());
        core::Holding holding;
        holding.account = account;
        holding.book = book;
        holding.nextOfAccount = accounts[account].firstHolding;
        holdings.push_back(holding);
        accounts[account].firstHolding = found;
        holdingIndex.set(pairKey(account, book), found);
    }
    return found;
}

PartsPerMillion Market::State::rateOf(std::uint32_t account, CollectionId collection) const
{
    const core::Account &holder = accounts[account];
    if (holder.hasRates) {
        const std::uint32_t rate
            = rates.find(pairKey(account, static_cast<std::uint32_t>(collection.value())));
        if (rate != kNone)
            return PartsPerMillion(rate);
    }
    return holder.fee;
}

void Market::State::touchAccount(std::uint32_t account)
{
    if (!accounts[account].dirty) {
        accounts[account].dirty = true;
        dirtyAccounts.push_back(accounts[account].id);
    }
}

void Market::State::touchBook(std::uint32_t book)
{
    if (!books[book].dirty) {
        books[book].dirty = true;
        dirtyBooks.push_back(books[book].facts.collection);
    }
}

void Market::State::hang(std::uint32_t index)
{
    Order &order = orders[index];
    core::Account &holder = accounts[order.account];
    order.previousOfAccount = holder.lastOrder;
    (holder.lastOrder == kNone ? holder.firstOrder : orders[holder.lastOrder].nextOfAccount)
        = index;
    holder.lastOrder = index;
    ++holder.openOrders;
    books[order.book].rest(orders, index);
}

OrderView Market::State::viewOf(const Order &order) const
{
    OrderView view;
    view.order = OrderNumber(order.number);
    view.account = accounts[order.account].id;
    view.collection = books[order.book].facts.collection;
    view.side = order.side;
    view.price = order.price;
    view.quantity = order.quantity;
    view.remaining = order.remaining;
    view.amount = order.amount;
    view.charged = order.charged;
    view.frozenCash = order.frozenCash;
    view.fee = order.fee;
    view.at = order.at;
    return view;
}

void Market::State::on(const CollectionListed &event)
{
    must(event.collection > CollectionId(0) && findBook(event.collection) == kNone,
         "a collection listed twice");
    must(isPrice(event.previousClose) && isPrice(event.lower) && isPrice(event.upper)
             && event.lower <= event.upper && isPrice(event.tick) && event.lot > Quantity(0)
             && event.issued >= Quantity(0),
         "a listing without sense");
    const auto index = static_cast<std::uint32_t>(books.size());
    books.emplace_back();
    CollectionView &facts = books.back().facts;
    facts.collection = event.collection;
    facts.issued = event.issued;
    facts.limit = event.limit;
    facts.tick = event.tick;
    facts.lot = event.lot;
    facts.day.previousClose = event.previousClose;
    facts.day.lower = event.lower;
    facts.day.upper = event.upper;
    bookIndex.set(static_cast<std::uint64_t>(event.collection.value()), index);
    touchBook(index);
}

void Market::State::on(const CollectionSuspended &event)
{
    const std::uint32_t book = needBook(event.collection);
    books[book].facts.suspended = event.suspended;
    touchBook(book);
}

void Market::State::on(const AccountOpened &event)
{
    must(event.account > AccountId(0) && findAccount(event.account) == kNone,
         "an account opened twice");
    must(event.fee <= kHighestFee, "a fee above the highest");
    const auto index = static_cast<std::uint32_t>(accounts.size());
    core::Account account;
    account.id = event.account;
    account.fee = event.fee;
    accounts.push_back(account);
    accountIndex.set(static_cast<std::uint64_t>(event.account.value()), index);
    touchAccount(index);
}

void Market::State::on(const AccountFrozen &event)
{
    const std::uint32_t account = needAccount(event.account);
    accounts[account].frozen = event.frozen;
    touchAccount(account);
}

void Market::State::on(const FeeRateSet &event)
{
    must(event.fee <= kHighestFee, "a fee above the highest");
    const std::uint32_t account = needAccount(event.account);
    if (event.collection == CollectionId(0)) {
        accounts[account].fee = event.fee;
    } else {
        accounts[account].hasRates = true;
        rates.set(pairKey(account, static_cast<std::uint32_t>(event.collection.value())),
                  static_cast<std::uint32_t>(event.fee.value()));
    }
    touchAccount(account);
}

void Market::State::on(const CashMoved &event)
{
    const std::uint32_t account = needAccount(event.account);
    core::Account &holder = accounts[account];
    const Fen after = holder.available + event.amount;
    must(after >= Fen(0) && after == event.available, "a movement of money that does not add up");
    const Fen outsideAfter = outside + event.amount;
    must(outsideAfter >= Fen(0), "more money went out than came in");
    holder.available = after;
    outside = outsideAfter;
    touchAccount(account);
}

void Market::State::on(const HoldingMoved &event)
{
    const std::uint32_t account = needAccount(event.account);
    const std::uint32_t book = needBook(event.collection);
    must(event.quantity > Quantity(0) && event.cost >= Fen(0), "a grant without sense");
    CollectionView &facts = books[book].facts;
    const Quantity circulating = facts.circulating + event.quantity;
    must(circulating + facts.sent <= facts.issued, "more pieces granted than issued");
    core::Holding &holding = holdings[ensureHolding(account, book)];
    must(holding.quantity + event.quantity == event.held, "a grant that does not add up");
    holding.quantity = event.held;
    holding.cost = capped(holding.cost, event.cost);
    facts.circulating = circulating;
    touchAccount(account);
}

void Market::State::on(const OrderAccepted &event)
{
    must(event.order.value() == lastOrder.value() + 1, "order numbers with a gap");
    const std::uint32_t account = needAccount(event.account);
    const std::uint32_t book = needBook(event.collection);
    must(isPrice(event.price) && event.quantity > Quantity(0) && event.fee <= kHighestFee
             && event.feeCap >= Fen(0),
         "an order without sense");
    if (event.side == Side::Buy) {
        must(event.frozenCash == event.price * event.quantity + event.feeCap
                 && event.frozenCash <= accounts[account].available,
             "an order froze more money than there is");
    } else {
        const std::uint32_t holding = findHolding(account, book);
        must(event.frozenCash == Fen(0) && event.feeCap == Fen(0) && holding != kNone
                 && event.quantity <= holdings[holding].quantity - holdings[holding].frozen,
             "an order froze more pieces than there are");
    }
    on(event, account, book);
}

void Market::State::on(const OrderAccepted &event, std::uint32_t account, std::uint32_t book)
{
    const std::uint32_t index = orders.add(static_cast<std::uint32_t>(event.order.value()));
    Order &order = orders[index];
    order.account = account;
    order.book = book;
    order.holding = ensureHolding(account, book);
    order.side = event.side;
    order.fee = event.fee;
    order.price = event.price;
    order.quantity = event.quantity;
    order.remaining = event.quantity;
    order.frozenCash = event.frozenCash;
    order.feeCap = event.feeCap;
    order.at = event.at;
    if (event.side == Side::Buy) {
        accounts[account].available -= event.frozenCash;
        accounts[account].frozenCash += event.frozenCash;
    } else {
        holdings[order.holding].frozen += event.quantity;
    }
    hang(index);
    lastOrder = event.order;
    touchAccount(account);
    touchBook(book);
}

void Market::State::on(const Deal &event)
{
    must(event.sequence.value() == lastDeal.value() + 1, "deal numbers with a gap");
    const std::uint32_t maker = orders.find(static_cast<std::uint32_t>(event.maker.value()));
    const std::uint32_t taker = orders.find(static_cast<std::uint32_t>(event.taker.value()));
    must(maker != kNone && taker != kNone && maker != taker, "a deal of orders that are not open");
    const Order &came = orders[taker];
    const Order &rested = orders[maker];
    const Order &buy = came.side == Side::Buy ? came : rested;
    const Order &sell = came.side == Side::Buy ? rested : came;
    must(came.side == event.takerSide && rested.side == opposite(came.side)
             && came.book == rested.book && event.collection == books[came.book].facts.collection
             && accounts[buy.account].id == event.buyer
             && accounts[sell.account].id == event.seller,
         "a deal of orders that do not belong together");
    must(isPrice(event.price) && event.quantity > Quantity(0) && event.quantity <= came.remaining
             && event.quantity <= rested.remaining && event.buyerFee >= Fen(0)
             && event.sellerFee >= Fen(0) && event.released >= Fen(0),
         "a deal without sense");
    const Fen amount = event.price * event.quantity;
    must(event.sellerFee <= amount && amount + event.buyerFee + event.released <= buy.frozenCash,
         "a deal that costs more than was frozen");
    on(event, maker, taker);
}

void Market::State::on(const Deal &event, std::uint32_t maker, std::uint32_t taker)
{
    Order &came = orders[taker];
    Order &rested = orders[maker];
    Order &buy = came.side == Side::Buy ? came : rested;
    Order &sell = came.side == Side::Buy ? rested : came;
    core::Book &book = books[came.book];
    const Fen amount = event.price * event.quantity;

    const Fen thawed = amount + event.buyerFee + event.released;
    core::Account &buyer = accounts[buy.account];
    buyer.frozenCash -= thawed;
    buyer.available += event.released;
    buy.frozenCash -= thawed;
    buy.charged += event.buyerFee;
    buy.amount += amount;

    core::Account &seller = accounts[sell.account];
    seller.available += amount - event.sellerFee;
    sell.charged += event.sellerFee;
    sell.amount += amount;
    fees += event.buyerFee + event.sellerFee;

    core::Holding &given = holdings[sell.holding];
    must(event.quantity <= given.quantity, "a deal of pieces that nobody holds");
    given.cost -= costOf(given, event.quantity);
    given.quantity -= event.quantity;
    given.frozen -= event.quantity;
    core::Holding &taken = holdings[buy.holding];
    taken.quantity += event.quantity;
    taken.cost = capped(taken.cost, amount + event.buyerFee);

    book.reduce(came, event.quantity);
    book.reduce(rested, event.quantity);
    came.remaining -= event.quantity;
    rested.remaining -= event.quantity;
    trade(book.facts.day, event);
    lastDeal = event.sequence;
    touchAccount(buy.account);
    touchAccount(sell.account);
    touchBook(came.book);
}

void Market::State::on(const OrderDone &event)
{
    const std::uint32_t index = orders.find(static_cast<std::uint32_t>(event.order.value()));
    must(index != kNone, "the end of an order that is not open");
    const Order &order = orders[index];
    must(accounts[order.account].id == event.account
             && books[order.book].facts.collection == event.collection
             && event.unfilled == order.remaining && event.releasedCash == order.frozenCash
             && event.releasedPieces == (order.side == Side::Sell ? order.remaining : Quantity(0))
             && (event.reason == DoneReason::Filled) == (order.remaining == Quantity(0)),
         "the end of an order that does not add up");
    on(event, index);
}

void Market::State::on(const OrderDone &event, std::uint32_t index)
{
    Order &order = orders[index];
    core::Account &holder = accounts[order.account];
    holder.frozenCash -= event.releasedCash;
    holder.available += event.releasedCash;
    holdings[order.holding].frozen -= event.releasedPieces;

    books[order.book].unlink(orders, index);
    (order.previousOfAccount == kNone ? holder.firstOrder
                                      : orders[order.previousOfAccount].nextOfAccount)
        = order.nextOfAccount;
    (order.nextOfAccount == kNone ? holder.lastOrder
                                  : orders[order.nextOfAccount].previousOfAccount)
        = order.previousOfAccount;
    --holder.openOrders;
    touchAccount(order.account);
    touchBook(order.book);
    orders.remove(index);
}

void Market::State::on(const ActionAnswered &event)
{
    const std::uint32_t account = needAccount(event.account);
    must(!event.key.isNull() && actions.find(account, event.key) == nullptr,
         "two answers under one key");
    if (!fault("keys-forgotten-at-restart"))
        on(event, account);
}

void Market::State::on(const ActionAnswered &event, std::uint32_t account)
{
    if (fault("keys-forgotten"))
        return;
    core::ActionLog::Entry entry;
    entry.key = event.key;
    entry.fingerprint = event.fingerprint;
    entry.session = session;
    entry.order = event.order;
    entry.revoked = event.revoked;
    entry.account = account;
    entry.status = event.status;
    actions.add(entry);
    ++accounts[account].keys;
}

void Market::State::on(const CollectionSettled &event)
{
    const std::uint32_t book = needBook(event.collection);
    must(isPrice(event.previousClose) && isPrice(event.lower) && isPrice(event.upper)
             && event.lower <= event.upper,
         "a settlement without sense");
    must(books[book].side(Side::Buy).empty() && books[book].side(Side::Sell).empty(),
         "a settlement with open orders");
    DayFigures fresh;
    fresh.previousClose = event.previousClose;
    fresh.lower = event.lower;
    fresh.upper = event.upper;
    books[book].facts.day = fresh;
    touchBook(book);
}

void Market::State::on(const DaySettled &event)
{
    must(orders.size() == 0, "a day that ended with open orders");
    must(event.session.value() == session.value() + 1 && event.day >= day,
         "a day that does not follow the last one");
    day = event.day;
    session = event.session;
    actions.dropBefore(Sequence(session.value() - (kKeySessions - 1)));
    for (core::Account &account : accounts)
        account.keys = 0;
    for (const core::ActionLog::Entry &entry : actions.entries())
        ++accounts[entry.account].keys;
}

void Market::State::on(const PhaseSet &event)
{
    open = event.open;
}

void Market::State::hang(const core::Transfer &transfer)
{
    transfers.emplace(transfer.number.value(), transfer);
    ++accounts[transfer.account].transfers;
    if (transfer.incoming)
        promised += transfer.amount;
}

void Market::State::on(const TransferBegun &event)
{
    must(event.transfer.value() == lastTransfer.value() + 1, "transfer numbers with a gap");
    must(event.amount > Fen(0) && !event.bank.isNull(), "a transfer without sense");
    const std::uint32_t account = needAccount(event.account);
    core::Account &holder = accounts[account];
    Fen after = holder.available;
    if (event.incoming)
        must(event.amount <= roomForMoney(), "a transfer of more than the market can hold");
    else
        after -= event.amount;
    must(after >= Fen(0) && after == event.available, "a transfer that does not add up");

    if (!event.incoming && !fault("payout-not-frozen"))
        holder.frozenCash += event.amount;
    holder.available = after;
    lastTransfer = event.transfer;
    core::Transfer transfer;
    transfer.number = event.transfer;
    transfer.account = account;
    transfer.incoming = event.incoming;
    transfer.amount = event.amount;
    transfer.bank = event.bank;
    transfer.card = event.card;
    transfer.key = event.key;
    transfer.at = event.at;
    hang(transfer);
    touchAccount(account);
}

void Market::State::on(const TransferEnded &event)
{
    const auto found = transfers.find(event.transfer.value());
    must(found != transfers.end(), "the end of a transfer that is not under way");
    const core::Transfer transfer = found->second;
    core::Account &holder = accounts[transfer.account];
    must(holder.id == event.account && transfer.incoming == event.incoming
             && transfer.amount == event.amount,
         "the end of a transfer that does not belong to it");
    const Fen back = event.done == event.incoming ? event.amount : Fen(0);
    must(holder.available + back == event.available, "the end of a transfer that does not add up");

    holder.available = event.available;
    if (!event.incoming)
        holder.frozenCash -= event.amount;
    if (event.done)
        outside = event.incoming ? outside + event.amount : outside - event.amount;
    if (event.incoming)
        promised -= event.amount;
    --holder.transfers;
    if (!fault("transfer-ends-twice"))
        transfers.erase(found);
    touchAccount(transfer.account);
}

// The average of what is left stays as it was.
Fen Market::State::costOf(const core::Holding &holding, Quantity quantity)
{
    return Fen(bounded(Wide(holding.cost.value()) * quantity.value() / holding.quantity.value()));
}

void Market::State::hang(const core::Delivery &delivery)
{
    deliveries.emplace(delivery.number.value(), delivery);
    ++accounts[delivery.account].deliveries;
}

void Market::State::on(const DeliveryRequested &event)
{
    must(event.delivery.value() == lastDelivery.value() + 1, "delivery numbers with a gap");
    must(event.quantity > Quantity(0) && !event.parcel.isNull(), "a delivery without sense");
    const std::uint32_t account = needAccount(event.account);
    const std::uint32_t book = needBook(event.collection);
    const std::uint32_t holding = findHolding(account, book);
    must(holding != kNone
             && event.quantity <= holdings[holding].quantity - holdings[holding].frozen,
         "a delivery of more pieces than there are");
    holdings[holding].frozen += event.quantity;
    lastDelivery = event.delivery;
    core::Delivery delivery;
    delivery.number = event.delivery;
    delivery.account = account;
    delivery.book = book;
    delivery.quantity = event.quantity;
    delivery.parcel = event.parcel;
    delivery.key = event.key;
    delivery.at = event.at;
    hang(delivery);
    touchAccount(account);
}

void Market::State::on(const DeliveryMoved &event)
{
    const auto found = deliveries.find(event.delivery.value());
    must(found != deliveries.end(), "news of a delivery that is not under way");
    core::Delivery &delivery = found->second;
    CollectionView &facts = books[delivery.book].facts;
    must(accounts[delivery.account].id == event.account && facts.collection == event.collection
             && delivery.quantity == event.quantity,
         "news of a delivery that do not belong to it");
    must(event.stage > delivery.stage
             && (event.stage != DeliveryStage::Cancelled
                 || delivery.stage == DeliveryStage::Requested),
         "a delivery that goes backwards");
    core::Holding &holding = holdings[findHolding(delivery.account, delivery.book)];
    const bool isSent = event.stage == DeliveryStage::Sent;
    must(event.cost == (isSent ? costOf(holding, event.quantity) : Fen(0)),
         "a delivery whose cost does not add up");

    touchAccount(delivery.account);
    if (event.stage == DeliveryStage::Preparing) {
        delivery.stage = event.stage;
        return;
    }
    holding.frozen -= event.quantity;
    if (isSent) {
        holding.quantity -= event.quantity;
        holding.cost -= event.cost;
        facts.circulating -= event.quantity;
        if (!fault("sent-pieces-granted-again"))
            facts.sent += event.quantity;
    }
    --accounts[delivery.account].deliveries;
    if (!fault("delivery-ends-twice"))
        deliveries.erase(found);
}

} // namespace zvx
