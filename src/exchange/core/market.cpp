#include "exchange/core/market.h"

#include "exchange/core/faults.h"
#include "exchange/core/state.h"

#include <algorithm>

// The rules: what a command comes to. What they decide is stated as events and taken in at once.

namespace zvx {

using core::kNone;
using core::mix;
using core::Order;

namespace {

constexpr std::size_t kMostRevokes = 1000;
constexpr std::size_t kMostRates = 100'000;

std::uint64_t chain(std::uint64_t seed, std::int64_t value)
{
    return mix(seed * 31 + static_cast<std::uint64_t>(value) + 0x9e3779b97f4a7c15u);
}

// What must be the same when a key is used again. The values are stored: they never change.
std::uint64_t fingerprint(const Deposit &c)
{
    return chain(1, c.amount.value());
}
std::uint64_t fingerprint(const Withdraw &c)
{
    return chain(2, c.amount.value());
}
std::uint64_t fingerprint(const GrantHolding &c)
{
    return chain(chain(chain(3, c.collection.value()), c.quantity.value()), c.unitCost.value());
}
std::uint64_t fingerprint(const PlaceOrder &c)
{
    return chain(
        chain(chain(chain(4, c.collection.value()), static_cast<int>(c.side)), c.price.value()),
        c.quantity.value());
}
std::uint64_t fingerprint(const RevokeOrders &c)
{
    std::uint64_t seed = 5;
    for (const OrderNumber number : c.orders)
        seed = chain(seed, number.value());
    return seed;
}
std::uint64_t fingerprint(const BeginTransfer &c)
{
    return chain(chain(6, c.incoming ? 1 : 0), c.amount.value());
}

std::uint64_t fingerprint(const RequestDelivery &c)
{
    return chain(chain(7, c.collection.value()), c.quantity.value());
}
std::uint64_t fingerprint(const CancelDelivery &c)
{
    return chain(8, c.delivery.value());
}

Result answer(Status status)
{
    Result result;
    result.status = status;
    return result;
}

/** What is answered to anybody who comes with a key that was answered before. */
Result answerAgain(const core::ActionLog::Entry &known)
{
    if (known.status == Status::KeyBurnt)
        return answer(Status::KeyBurnt);
    Result result = answer(Status::Exists);
    result.first = known.status;
    result.order = known.order;
    result.revoked = known.revoked;
    return result;
}

bool isPrice(Fen price)
{
    return price >= Fen(1) && price < Fen(kPriceBound);
}

} // namespace

Market::Market(TradingDay day, const Limits &limits) : m_state(std::make_unique<State>(day, limits))
{
}

Market::Market(Market &&) noexcept = default;
Market &Market::operator=(Market &&) noexcept = default;
Market::~Market() = default;

Result Market::apply(const Command &command, TimeMs now, std::vector<Event> &out)
{
    State::Context context{TimeMs(std::clamp(now.value(), TimeMs::least, TimeMs::most)), out};
    return std::visit([&](const auto &body) { return m_state->decide(body, context); }, command);
}

void Market::replay(const Event &event)
{
    try {
        std::visit([this](const auto &body) { m_state->on(body); }, event);
    } catch (const OutOfBounds &) {
        throw Damaged("an event with an amount out of bounds");
    }
}

/** Answers a command of an account under its key: the first time by `judge`, later with the first
 *  answer. */
template <class Keyed, class Judge>
Result Market::State::once(const Keyed &command, Context &context, bool refusalFreesKey,
                           Judge &&judge)
{
    const std::uint32_t account = findAccount(command.account);
    if (account == kNone)
        return answer(Status::AccountUnknown);
    const bool keyed = !command.key.isNull();
    std::uint64_t print = 0;
    if (keyed) {
        print = fingerprint(command);
        if (const auto *known = actions.find(account, command.key)) {
            if (known->status != Status::KeyBurnt && known->fingerprint != print)
                return answer(Status::KeyDiffers);
            return answerAgain(*known);
        }
        if (accounts[account].keys >= limits.keysOfAccount)
            return answer(Status::TooManyActions);
    }

    const Result result = accounts[account].frozen ? answer(Status::AccountFrozen) : judge(account);
    const bool remember = result.status == Status::Accepted || !refusalFreesKey;
    if (keyed && remember) {
        ActionAnswered answered{};
        answered.at = context.now;
        answered.account = command.account;
        answered.key = command.key;
        answered.fingerprint = print;
        answered.status = result.status;
        answered.order = result.order;
        answered.revoked = result.revoked;
        happen(context, answered, account);
    }
    return result;
}

Result Market::State::decide(const ListCollection &command, Context &context)
{
    if (command.collection <= CollectionId(0) || !command.collection.inRange())
        return answer(Status::CollectionUnknown);
    if (findBook(command.collection) != kNone)
        return answer(Status::AlreadyThere);
    if (!isPrice(command.previousClose) || !isPrice(command.tick)
        || command.previousClose.value() % command.tick.value() != 0)
        return answer(Status::BadPrice);
    if (command.lot <= Quantity(0) || command.issued < Quantity(0) || !command.lot.inRange()
        || !command.issued.inRange())
        return answer(Status::BadQuantity);
    if (!command.limit.inRange() || command.limit >= PartsPerMillion(1'000'000))
        return answer(Status::BadRate);
    if (books.size() >= limits.collections)
        return answer(Status::MarketFull);
    const PriceLimits range = priceLimits(command.previousClose, command.limit);
    happen(context,
           CollectionListed{context.now, command.collection, command.previousClose, command.issued,
                            command.limit, command.tick, command.lot, range.lower, range.upper});
    return {};
}

Result Market::State::decide(const SuspendCollection &command, Context &context)
{
    const std::uint32_t book = findBook(command.collection);
    if (book == kNone)
        return answer(Status::CollectionUnknown);
    if (books[book].facts.suspended != command.suspended)
        happen(context, CollectionSuspended{context.now, command.collection, command.suspended});
    return {};
}

Result Market::State::decide(const OpenAccount &command, Context &context)
{
    if (command.account <= AccountId(0) || !command.account.inRange())
        return answer(Status::AccountUnknown);
    if (findAccount(command.account) != kNone)
        return answer(Status::AlreadyThere);
    const auto badRate = [](PartsPerMillion rate) { return !rate.inRange() || rate > kHighestFee; };
    if (badRate(command.fee) || command.rates.size() > kMostRates)
        return answer(Status::BadRate);
    for (const auto &[collection, rate] : command.rates) {
        if (badRate(rate))
            return answer(Status::BadRate);
        if (collection <= CollectionId(0) || !collection.inRange())
            return answer(Status::CollectionUnknown);
    }
    if (accounts.size() >= limits.accounts)
        return answer(Status::MarketFull);
    happen(context, AccountOpened{context.now, command.account, command.fee});
    for (const auto &[collection, rate] : command.rates)
        happen(context, FeeRateSet{context.now, command.account, collection, rate});
    return {};
}

Result Market::State::decide(const FreezeAccount &command, Context &context)
{
    const std::uint32_t account = findAccount(command.account);
    if (account == kNone)
        return answer(Status::AccountUnknown);
    if (accounts[account].frozen != command.frozen)
        happen(context, AccountFrozen{context.now, command.account, command.frozen});
    return {};
}

Result Market::State::decide(const SetFeeRate &command, Context &context)
{
    const std::uint32_t account = findAccount(command.account);
    if (account == kNone)
        return answer(Status::AccountUnknown);
    if (command.collection < CollectionId(0) || !command.collection.inRange())
        return answer(Status::CollectionUnknown);
    if (!command.fee.inRange() || command.fee > kHighestFee)
        return answer(Status::BadRate);
    happen(context, FeeRateSet{context.now, command.account, command.collection, command.fee});
    return {};
}

Result Market::State::decide(const Deposit &command, Context &context)
{
    return once(command, context, false, [&](std::uint32_t account) {
        if (command.amount <= Fen(0) || command.amount > roomForMoney())
            return answer(Status::BadAmount);
        happen(context,
               CashMoved{context.now, command.account, command.amount,
                         accounts[account].available + command.amount});
        return Result();
    });
}

Result Market::State::decide(const Withdraw &command, Context &context)
{
    return once(command, context, false, [&](std::uint32_t account) {
        if (command.amount <= Fen(0) || !command.amount.inRange())
            return answer(Status::BadAmount);
        // Fees that were earned stay, so what goes out was always in.
        if (command.amount > accounts[account].available)
            return answer(Status::NotEnoughMoney);
        happen(context,
               CashMoved{context.now, command.account, -command.amount,
                         accounts[account].available - command.amount});
        return Result();
    });
}

Result Market::State::decide(const GrantHolding &command, Context &context)
{
    return once(command, context, false, [&](std::uint32_t account) {
        const std::uint32_t book = findBook(command.collection);
        if (book == kNone)
            return answer(Status::CollectionUnknown);
        const CollectionView &facts = books[book].facts;
        if (command.quantity <= Quantity(0)
            || command.quantity > facts.issued - facts.circulating - facts.sent)
            return answer(Status::BadQuantity);
        if (command.unitCost < Fen(0) || command.unitCost >= Fen(kPriceBound))
            return answer(Status::BadAmount);
        const Wide cost = Wide(command.unitCost.value()) * command.quantity.value();
        const std::uint32_t holding = findHolding(account, book);
        const Quantity held = holding == kNone ? Quantity(0) : holdings[holding].quantity;
        happen(context,
               HoldingMoved{context.now, command.account, command.collection, command.quantity,
                            Fen(static_cast<std::int64_t>(std::min<Wide>(cost, kAmountBound))),
                            held + command.quantity});
        return Result();
    });
}

Result Market::State::decide(const PlaceOrder &command, Context &context)
{
    return once(command, context, command.refusalFreesKey,
                [&](std::uint32_t account) { return place(command, context, account); });
}

/** Asks every rule of an order in order of precedence, and fills in what the order freezes. */
Status Market::State::judge(const PlaceOrder &command, std::uint32_t account, std::uint32_t book,
                            OrderAccepted &outcome) const
{
    if (!open)
        return Status::MarketClosed;
    if (book == kNone)
        return Status::CollectionUnknown;
    const CollectionView &facts = books[book].facts;
    if (facts.suspended)
        return Status::CollectionSuspended;
    const bool tooHigh = command.price > facts.day.upper && !fault("upper-limit-ignored");
    if (command.price < facts.day.lower || tooHigh || !isPrice(command.price))
        return Status::PriceOutsideLimits;
    if (command.price.value() % facts.tick.value() != 0)
        return Status::BadTick;
    if (command.quantity < Quantity(1) || command.quantity > limits.orderQuantity
        || command.quantity.value() % facts.lot.value() != 0)
        return Status::BadQuantity;

    outcome.fee = rateOf(account, command.collection);
    if (command.side == Side::Buy) {
        const Fen rest = command.price * command.quantity;
        Fen fee = share(rest, outcome.fee);
        if (fault("reservation-without-fee"))
            fee = Fen(0);
        const Fen shortfall = rest + fee - accounts[account].available;
        if (shortfall > Fen(0)) {
            // Clients hold money and prices as float, whose error is one part in 2^24 each. What
            // they show as their highest quantity is taken, and the fee pays for the difference.
            const Fen slack(std::min((rest + fee).value() >> 22, fee.value()));
            if (shortfall > slack)
                return Status::NotEnoughMoney;
            fee -= shortfall;
        }
        outcome.feeCap = fee;
        outcome.frozenCash = rest + fee;
    } else {
        const std::uint32_t holding = findHolding(account, book);
        const Quantity free = holding == kNone
            ? Quantity(0)
            : holdings[holding].quantity - holdings[holding].frozen;
        if (command.quantity > free && !fault("short-sale"))
            return Status::NotEnoughHoldings;
    }
    if (accounts[account].openOrders >= limits.openOrdersOfAccount)
        return Status::TooManyOpenOrders;
    if (orders.size() >= limits.openOrders || lastOrder.value() >= OrderNumber::most)
        return Status::MarketFull;
    return Status::Accepted;
}

Result Market::State::place(const PlaceOrder &command, Context &context, std::uint32_t account)
{
    const std::uint32_t book = findBook(command.collection);
    OrderAccepted accepted{};
    const Status status = judge(command, account, book, accepted);
    if (status != Status::Accepted)
        return answer(status);

    accepted.at = context.now;
    accepted.order = OrderNumber(lastOrder.value() + 1);
    accepted.account = command.account;
    accepted.collection = command.collection;
    accepted.side = command.side;
    accepted.price = command.price;
    accepted.quantity = command.quantity;
    happen(context, accepted, account, book);
    match(orders.find(static_cast<std::uint32_t>(accepted.order.value())), context);

    Result result;
    result.order = accepted.order;
    return result;
}

void Market::State::match(std::uint32_t taker, Context &context)
{
    Order &came = orders[taker];
    core::Book &book = books[came.book];
    std::vector<core::PriceLevel> &against = book.side(opposite(came.side));
    const std::int32_t key = core::Book::keyOf(came.side, came.price);

    while (came.remaining > Quantity(0) && !against.empty()
           && core::Book::cross(key, against.back().key)) {
        if (fault("touching-prices-missed") && key + against.back().key == 0)
            break;
        const std::uint32_t maker = against.back().head;
        Order &rested = orders[maker];
        if (rested.account == came.account && !fault("self-trade")) {
            finish(maker, DoneReason::SelfTrade, context);
            continue;
        }
        const bool buying = came.side == Side::Buy;
        const Order &buy = buying ? came : rested;
        const Order &sell = buying ? rested : came;

        Deal deal{};
        deal.at = context.now;
        deal.sequence = Sequence(lastDeal.value() + 1);
        deal.collection = book.facts.collection;
        deal.maker = OrderNumber(rested.number);
        deal.taker = OrderNumber(came.number);
        deal.takerSide = came.side;
        deal.buyer = accounts[buy.account].id;
        deal.seller = accounts[sell.account].id;
        deal.price = rested.price;
        deal.quantity = std::min(came.remaining, rested.remaining);
        const Fen amount = deal.price * deal.quantity;
        deal.buyerFee = buy.feeAfter(buy.amount + amount) - buy.charged;
        deal.sellerFee = sell.feeAfter(sell.amount + amount) - sell.charged;
        if (fault("fee-rounded-each-fill"))
            deal.sellerFee = share(amount, sell.fee);

        Order after = buy;
        after.remaining -= deal.quantity;
        after.amount += amount;
        after.charged += deal.buyerFee;
        deal.released = buy.frozenCash - after.needsFrozen() - amount - deal.buyerFee;
        if (fault("fee-not-released"))
            deal.released = (buy.price - deal.price) * deal.quantity;

        happen(context, deal, maker, taker);
        if (fault("replay-needs-memory"))
            accounts[sell.account].available += Fen(1);
        if (rested.remaining == Quantity(0))
            finish(maker, DoneReason::Filled, context);
    }
    if (came.remaining == Quantity(0))
        finish(taker, DoneReason::Filled, context);
}

void Market::State::finish(std::uint32_t index, DoneReason reason, Context &context)
{
    const Order &order = orders[index];
    OrderDone done{};
    done.at = context.now;
    done.order = OrderNumber(order.number);
    done.account = accounts[order.account].id;
    done.collection = books[order.book].facts.collection;
    done.reason = reason;
    done.unfilled = order.remaining;
    done.releasedCash = order.frozenCash;
    if (order.side == Side::Sell)
        done.releasedPieces = order.remaining;
    if (fault("revoke-releases-at-limit") && reason == DoneReason::Revoked
        && order.side == Side::Buy)
        done.releasedCash = order.price * order.remaining;
    happen(context, done, index);
}

Status Market::State::judgeRevoke(OrderNumber number, std::uint32_t account) const
{
    if (number <= OrderNumber(0) || number > lastOrder)
        return Status::OrderUnknown;
    const std::uint32_t order = orders.find(static_cast<std::uint32_t>(number.value()));
    if (order == kNone)
        return Status::OrderDone;
    if (orders[order].account != account && !fault("foreign-order-revoked"))
        return Status::NotYourOrder;
    return Status::Accepted;
}

Result Market::State::decide(const RevokeOrders &command, Context &context)
{
    return once(command, context, false, [&](std::uint32_t account) {
        if (command.orders.empty() || command.orders.size() > kMostRevokes)
            return answer(Status::BadQuantity);
        Result result = answer(judgeRevoke(command.orders.front(), account));
        for (const OrderNumber number : command.orders) {
            if (judgeRevoke(number, account) == Status::Accepted) {
                finish(orders.find(static_cast<std::uint32_t>(number.value())), DoneReason::Revoked,
                       context);
                ++result.revoked;
                result.status = Status::Accepted;
            }
        }
        return result;
    });
}

Result Market::State::decide(const SettleDay &command, Context &context)
{
    if (command.nextDay < day || !command.nextDay.inRange())
        return answer(Status::BadDay);
    orders.forEach([&](std::uint32_t order) { finish(order, DoneReason::Ended, context); });
    for (const core::Book &book : books) {
        const CollectionView &facts = book.facts;
        CollectionSettled settled{};
        settled.at = context.now;
        settled.collection = facts.collection;
        settled.day = day;
        settled.session = session;
        settled.open = facts.day.open;
        settled.high = facts.day.high;
        settled.low = facts.day.low;
        settled.last = facts.day.last;
        settled.volume = facts.day.volume;
        settled.amount = facts.day.amount;
        const bool traded = facts.day.deals > 0 && !fault("close-not-carried");
        settled.previousClose = traded ? facts.day.last : facts.day.previousClose;
        const PriceLimits range = priceLimits(settled.previousClose, facts.limit);
        settled.lower = range.lower;
        settled.upper = range.upper;
        happen(context, settled);
    }
    happen(context, DaySettled{context.now, command.nextDay, Sequence(session.value() + 1)});
    return {};
}

Result Market::State::decide(const SetPhase &command, Context &context)
{
    if (open != command.open)
        happen(context, PhaseSet{context.now, command.open});
    return {};
}

Result Market::State::decide(const BurnKey &command, Context &context)
{
    const std::uint32_t account = findAccount(command.account);
    if (account == kNone)
        return answer(Status::AccountUnknown);
    if (command.key.isNull())
        return answer(Status::BadKey);
    if (const auto *known = actions.find(account, command.key))
        return answerAgain(*known);
    if (accounts[account].keys >= limits.keysOfAccount)
        return answer(Status::TooManyActions);
    ActionAnswered burnt{};
    burnt.at = context.now;
    burnt.account = command.account;
    burnt.key = command.key;
    burnt.status = Status::KeyBurnt;
    if (!fault("burnt-key-forgotten"))
        happen(context, burnt, account);
    return answer(Status::KeyBurnt);
}

Status Market::State::judge(const BeginTransfer &command, std::uint32_t account) const
{
    if (command.ruling != Status::Accepted)
        return command.ruling;
    if (command.amount <= Fen(0) || !command.amount.inRange()
        || (command.incoming && command.amount > roomForMoney()))
        return Status::BadAmount;
    if (!command.incoming && command.amount > accounts[account].available)
        return Status::NotEnoughMoney;
    if (accounts[account].transfers >= limits.transfersOfAccount)
        return Status::TooManyTransfers;
    return Status::Accepted;
}

Result Market::State::decide(const BeginTransfer &command, Context &context)
{
    if (command.bank.isNull())
        return answer(Status::BadKey);
    return once(command, context, false, [&](std::uint32_t account) {
        Result result = answer(judge(command, account));
        if (result.status != Status::Accepted)
            return result;
        TransferBegun begun{};
        begun.at = context.now;
        begun.transfer = TransferNumber(lastTransfer.value() + 1);
        begun.account = command.account;
        begun.incoming = command.incoming;
        begun.amount = command.amount;
        begun.available = accounts[account].available;
        if (!command.incoming)
            begun.available -= command.amount;
        begun.bank = command.bank;
        begun.card = command.card;
        begun.key = command.key;
        happen(context, begun);
        result.transfer = begun.transfer;
        return result;
    });
}

Result Market::State::decide(const EndTransfer &command, Context &context)
{
    if (command.transfer <= TransferNumber(0) || command.transfer > lastTransfer)
        return answer(Status::TransferUnknown);
    const auto found = transfers.find(command.transfer.value());
    if (found == transfers.end())
        return answer(Status::TransferDone);
    const core::Transfer &transfer = found->second;
    TransferEnded ended{};
    ended.at = context.now;
    ended.transfer = transfer.number;
    ended.account = accounts[transfer.account].id;
    ended.incoming = transfer.incoming;
    ended.amount = transfer.amount;
    ended.done = command.done || fault("refused-transfer-done");
    ended.available = accounts[transfer.account].available;
    // What comes in well, and what goes out and is refused, is there in the end.
    if (ended.done == ended.incoming)
        ended.available += transfer.amount;
    happen(context, ended);
    Result result;
    result.transfer = ended.transfer;
    return result;
}

Status Market::State::judge(const RequestDelivery &command, std::uint32_t account) const
{
    const std::uint32_t book = findBook(command.collection);
    if (book == kNone)
        return Status::CollectionUnknown;
    if (command.quantity < Quantity(1) || command.quantity > limits.orderQuantity)
        return Status::BadQuantity;
    const std::uint32_t holding = findHolding(account, book);
    if (holding == kNone
        || (command.quantity > holdings[holding].quantity - holdings[holding].frozen
            && !fault("delivery-of-frozen-pieces")))
        return Status::NotEnoughHoldings;
    if (accounts[account].deliveries >= limits.deliveriesOfAccount)
        return Status::TooManyDeliveries;
    return Status::Accepted;
}

Result Market::State::decide(const RequestDelivery &command, Context &context)
{
    if (command.parcel.isNull())
        return answer(Status::BadKey);
    return once(command, context, false, [&](std::uint32_t account) {
        Result result = answer(judge(command, account));
        if (result.status != Status::Accepted)
            return result;
        DeliveryRequested requested{};
        requested.at = context.now;
        requested.delivery = DeliveryNumber(lastDelivery.value() + 1);
        requested.account = command.account;
        requested.collection = command.collection;
        requested.quantity = command.quantity;
        requested.parcel = command.parcel;
        requested.key = command.key;
        happen(context, requested);
        result.delivery = requested.delivery;
        return result;
    });
}

Result Market::State::decide(const CancelDelivery &command, Context &context)
{
    return once(command, context, false, [&](std::uint32_t account) {
        if (command.delivery <= DeliveryNumber(0) || command.delivery > lastDelivery)
            return answer(Status::DeliveryUnknown);
        const auto found = deliveries.find(command.delivery.value());
        if (found == deliveries.end())
            return answer(Status::DeliveryDone);
        if (found->second.account != account && !fault("foreign-delivery-cancelled"))
            return answer(Status::DeliveryUnknown);
        if (found->second.stage != DeliveryStage::Requested && !fault("late-cancel"))
            return answer(Status::DeliveryDone);
        Result result;
        result.delivery = command.delivery;
        move(found->second, DeliveryStage::Cancelled, context);
        return result;
    });
}

Result Market::State::decide(const AdvanceDelivery &command, Context &context)
{
    if (command.delivery <= DeliveryNumber(0) || command.delivery > lastDelivery)
        return answer(Status::DeliveryUnknown);
    const auto found = deliveries.find(command.delivery.value());
    if (found == deliveries.end() || command.stage <= found->second.stage
        || command.stage > DeliveryStage::Refused)
        return answer(Status::DeliveryDone);
    move(found->second, command.stage, context);
    Result result;
    result.delivery = command.delivery;
    return result;
}

void Market::State::move(const core::Delivery &delivery, DeliveryStage stage, Context &context)
{
    DeliveryMoved moved{};
    moved.at = context.now;
    moved.delivery = delivery.number;
    moved.account = accounts[delivery.account].id;
    moved.collection = books[delivery.book].facts.collection;
    moved.quantity = delivery.quantity;
    moved.stage = stage;
    if (stage == DeliveryStage::Sent)
        moved.cost
            = costOf(holdings[findHolding(delivery.account, delivery.book)], delivery.quantity);
    happen(context, moved);
}

TradingDay Market::day() const
{
    return m_state->day;
}
Sequence Market::session() const
{
    return m_state->session;
}
bool Market::isOpen() const
{
    return m_state->open;
}
OrderNumber Market::lastOrder() const
{
    return m_state->lastOrder;
}
Sequence Market::lastDeal() const
{
    return m_state->lastDeal;
}
TransferNumber Market::lastTransfer() const
{
    return m_state->lastTransfer;
}
DeliveryNumber Market::lastDelivery() const
{
    return m_state->lastDelivery;
}
Fen Market::feesEarned() const
{
    return m_state->fees;
}
std::size_t Market::openOrders() const
{
    return m_state->orders.size();
}

std::vector<CollectionId> Market::collections() const
{
    std::vector<CollectionId> ids;
    ids.reserve(m_state->books.size());
    for (const core::Book &book : m_state->books)
        ids.push_back(book.facts.collection);
    return ids;
}

std::vector<AccountId> Market::accounts() const
{
    std::vector<AccountId> ids;
    ids.reserve(m_state->accounts.size());
    for (const core::Account &account : m_state->accounts)
        ids.push_back(account.id);
    return ids;
}

std::optional<CollectionView> Market::collection(CollectionId id) const
{
    const std::uint32_t book = m_state->findBook(id);
    if (book == kNone)
        return std::nullopt;
    return m_state->books[book].facts;
}

std::optional<AccountView> Market::account(AccountId id) const
{
    const std::uint32_t index = m_state->findAccount(id);
    if (index == kNone)
        return std::nullopt;
    const core::Account &account = m_state->accounts[index];
    AccountView view;
    view.account = account.id;
    view.frozen = account.frozen;
    view.fee = account.fee;
    view.available = account.available;
    view.frozenCash = account.frozenCash;
    view.openOrders = account.openOrders;
    return view;
}

std::optional<OrderView> Market::order(OrderNumber number) const
{
    if (number <= OrderNumber(0) || number > m_state->lastOrder)
        return std::nullopt;
    const std::uint32_t index = m_state->orders.find(static_cast<std::uint32_t>(number.value()));
    if (index == kNone)
        return std::nullopt;
    return m_state->viewOf(m_state->orders[index]);
}

void Market::levels(CollectionId id, Side side, std::size_t depth, std::vector<Level> &out) const
{
    out.clear();
    const std::uint32_t book = m_state->findBook(id);
    if (book == kNone)
        return;
    const std::vector<core::PriceLevel> &levels = m_state->books[book].side(side);
    for (auto at = levels.rbegin(); at != levels.rend() && out.size() < depth; ++at)
        out.push_back({core::Book::priceOf(side, at->key), at->quantity, at->orders});
}

void Market::ordersOf(AccountId id, std::vector<OrderView> &out) const
{
    out.clear();
    const std::uint32_t account = m_state->findAccount(id);
    if (account == kNone)
        return;
    for (std::uint32_t at = m_state->accounts[account].firstOrder; at != kNone;
         at = m_state->orders[at].nextOfAccount)
        out.push_back(m_state->viewOf(m_state->orders[at]));
}

void Market::holdingsOf(AccountId id, std::vector<HoldingView> &out) const
{
    out.clear();
    const std::uint32_t account = m_state->findAccount(id);
    if (account == kNone)
        return;
    for (std::uint32_t at = m_state->accounts[account].firstHolding; at != kNone;
         at = m_state->holdings[at].nextOfAccount) {
        const core::Holding &holding = m_state->holdings[at];
        if (!holding.isEmpty())
            out.push_back({m_state->books[holding.book].facts.collection, holding.quantity,
                           holding.frozen, holding.cost});
    }
    std::sort(out.begin(), out.end(), [](const HoldingView &a, const HoldingView &b) {
        return a.collection < b.collection;
    });
}

HoldingView Market::holding(AccountId account, CollectionId collection) const
{
    HoldingView view;
    view.collection = collection;
    const std::uint32_t holder = m_state->findAccount(account);
    const std::uint32_t book = m_state->findBook(collection);
    if (holder == kNone || book == kNone)
        return view;
    const std::uint32_t index = m_state->findHolding(holder, book);
    if (index == kNone)
        return view;
    const core::Holding &holding = m_state->holdings[index];
    view.quantity = holding.quantity;
    view.frozen = holding.frozen;
    view.cost = holding.cost;
    return view;
}

void Market::transfers(std::vector<TransferView> &out) const
{
    out.clear();
    for (const auto &[number, transfer] : m_state->transfers) {
        TransferView view;
        view.transfer = transfer.number;
        view.account = m_state->accounts[transfer.account].id;
        view.incoming = transfer.incoming;
        view.amount = transfer.amount;
        view.bank = transfer.bank;
        view.card = transfer.card;
        view.key = transfer.key;
        view.at = transfer.at;
        out.push_back(view);
    }
}

void Market::deliveries(std::vector<DeliveryView> &out) const
{
    out.clear();
    for (const auto &[number, delivery] : m_state->deliveries) {
        DeliveryView view;
        view.delivery = delivery.number;
        view.account = m_state->accounts[delivery.account].id;
        view.collection = m_state->books[delivery.book].facts.collection;
        view.quantity = delivery.quantity;
        view.stage = delivery.stage;
        view.parcel = delivery.parcel;
        view.key = delivery.key;
        view.at = delivery.at;
        out.push_back(view);
    }
}

PartsPerMillion Market::feeRate(AccountId account, CollectionId collection) const
{
    const std::uint32_t index = m_state->findAccount(account);
    return index == kNone ? kDefaultFee : m_state->rateOf(index, collection);
}

std::optional<Result> Market::answerOf(AccountId account, ActionKey key) const
{
    const std::uint32_t index = m_state->findAccount(account);
    if (index == kNone)
        return std::nullopt;
    const core::ActionLog::Entry *entry = m_state->actions.find(index, key);
    if (!entry)
        return std::nullopt;
    return answerAgain(*entry);
}

void Market::takeDirty(std::vector<CollectionId> &out)
{
    out.clear();
    out.swap(m_state->dirtyBooks);
    for (const CollectionId id : out)
        m_state->books[m_state->findBook(id)].dirty = false;
}

void Market::takeDirtyAccounts(std::vector<AccountId> &out)
{
    out.clear();
    out.swap(m_state->dirtyAccounts);
    for (const AccountId id : out)
        m_state->accounts[m_state->findAccount(id)].dirty = false;
}

} // namespace zvx
