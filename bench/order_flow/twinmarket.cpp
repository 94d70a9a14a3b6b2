#include "twinmarket.h"

#include <algorithm>

using namespace zvx;

namespace {

constexpr std::size_t kMostRevokes = 1000;
constexpr std::size_t kMostRates = 100'000;

Result answer(Status status)
{
    Result result;
    result.status = status;
    return result;
}

bool isPrice(Fen price)
{
    return price >= Fen(1) && price < Fen(kPriceBound);
}

template <class Amount>
Amount capped(Amount a, Amount b)
{
    return Amount(std::min(a.value() + b.value(), kAmountBound));
}

// What must be the same when a key comes again.
template <class... Numbers>
std::uint64_t printOf(Numbers... numbers)
{
    std::uint64_t print = 0xCBF29CE484222325u;
    ((print = (print ^ static_cast<std::uint64_t>(numbers)) * 0x100000001B3u), ...);
    return print;
}

void countDeal(DayFigures &day, const Deal &deal)
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

} // namespace

Fen TwinMarket::Order::feeAfter(Fen amountThen) const
{
    const Fen due = share(amountThen, fee);
    return side == Side::Buy ? std::min(due, feeCap) : due;
}

Fen TwinMarket::Order::needsFrozen() const
{
    if (side == Side::Sell)
        return Fen(0);
    const Fen rest = price * remaining;
    return rest + feeAfter(amount + rest) - charged;
}

TwinMarket::TwinMarket(const Limits &limits) : m_limits(limits) { }

Result TwinMarket::apply(const Command &command, TimeMs now, std::vector<Event> &out)
{
    m_now = now;
    return std::visit([&](const auto &body) { return carryOut(body, out); }, command);
}

TwinMarket::Account *TwinMarket::accountOf(AccountId id)
{
    const auto found = m_accounts.find(id.value());
    return found == m_accounts.end() ? nullptr : &found->second;
}

TwinMarket::Book *TwinMarket::bookOf(CollectionId id)
{
    const auto found = m_books.find(id.value());
    return found == m_books.end() ? nullptr : &found->second;
}

const TwinMarket::Account *TwinMarket::accountOf(AccountId id) const
{
    const auto found = m_accounts.find(id.value());
    return found == m_accounts.end() ? nullptr : &found->second;
}

const TwinMarket::Book *TwinMarket::bookOf(CollectionId id) const
{
    const auto found = m_books.find(id.value());
    return found == m_books.end() ? nullptr : &found->second;
}

Result TwinMarket::carryOut(const ListCollection &command, Happened &out)
{
    if (command.collection <= CollectionId(0) || !command.collection.inRange())
        return answer(Status::CollectionUnknown);
    if (bookOf(command.collection))
        return answer(Status::AlreadyThere);
    if (!isPrice(command.previousClose) || !isPrice(command.tick)
        || command.previousClose.value() % command.tick.value() != 0)
        return answer(Status::BadPrice);
    if (command.lot <= Quantity(0) || command.issued < Quantity(0) || !command.lot.inRange()
        || !command.issued.inRange())
        return answer(Status::BadQuantity);
    if (!command.limit.inRange() || command.limit >= PartsPerMillion(1'000'000))
        return answer(Status::BadRate);
    if (m_books.size() >= m_limits.collections)
        return answer(Status::MarketFull);
    const PriceLimits range = priceLimits(command.previousClose, command.limit);
    Book &book = m_books[command.collection.value()];
    book.facts.collection = command.collection;
    book.facts.issued = command.issued;
    book.facts.limit = command.limit;
    book.facts.tick = command.tick;
    book.facts.lot = command.lot;
    book.facts.day.previousClose = command.previousClose;
    book.facts.day.lower = range.lower;
    book.facts.day.upper = range.upper;
    m_listed.push_back(&book);
    out.emplace_back(CollectionListed{m_now, command.collection, command.previousClose,
                                      command.issued, command.limit, command.tick, command.lot,
                                      range.lower, range.upper});
    return {};
}

Result TwinMarket::carryOut(const SuspendCollection &command, Happened &out)
{
    Book *book = bookOf(command.collection);
    if (!book)
        return answer(Status::CollectionUnknown);
    if (book->facts.suspended != command.suspended) {
        book->facts.suspended = command.suspended;
        out.emplace_back(CollectionSuspended{m_now, command.collection, command.suspended});
    }
    return {};
}

Result TwinMarket::carryOut(const OpenAccount &command, Happened &out)
{
    if (command.account <= AccountId(0) || !command.account.inRange())
        return answer(Status::AccountUnknown);
    if (accountOf(command.account))
        return answer(Status::AlreadyThere);
    const auto isBad = [](PartsPerMillion rate) { return !rate.inRange() || rate > kHighestFee; };
    if (isBad(command.fee) || command.rates.size() > kMostRates)
        return answer(Status::BadRate);
    for (const auto &[collection, rate] : command.rates) {
        if (isBad(rate))
            return answer(Status::BadRate);
        if (collection <= CollectionId(0) || !collection.inRange())
            return answer(Status::CollectionUnknown);
    }
    if (m_accounts.size() >= m_limits.accounts)
        return answer(Status::MarketFull);
    Account &account = m_accounts[command.account.value()];
    account.id = command.account;
    account.fee = command.fee;
    out.emplace_back(AccountOpened{m_now, command.account, command.fee});
    for (const auto &[collection, rate] : command.rates) {
        account.rates[collection.value()] = rate;
        out.emplace_back(FeeRateSet{m_now, command.account, collection, rate});
    }
    return {};
}

Result TwinMarket::carryOut(const FreezeAccount &command, Happened &out)
{
    Account *account = accountOf(command.account);
    if (!account)
        return answer(Status::AccountUnknown);
    if (account->frozen != command.frozen) {
        account->frozen = command.frozen;
        out.emplace_back(AccountFrozen{m_now, command.account, command.frozen});
    }
    return {};
}

Result TwinMarket::carryOut(const SetFeeRate &command, Happened &out)
{
    Account *account = accountOf(command.account);
    if (!account)
        return answer(Status::AccountUnknown);
    if (command.collection < CollectionId(0) || !command.collection.inRange())
        return answer(Status::CollectionUnknown);
    if (!command.fee.inRange() || command.fee > kHighestFee)
        return answer(Status::BadRate);
    if (command.collection == CollectionId(0))
        account->fee = command.fee;
    else
        account->rates[command.collection.value()] = command.fee;
    out.emplace_back(FeeRateSet{m_now, command.account, command.collection, command.fee});
    return {};
}

// Answers a command under its key: the first time by `judge`, later with the first answer.
template <class Keyed, class Judge>
Result TwinMarket::once(const Keyed &command, std::uint64_t fingerprint, bool refusalFreesKey,
                        Happened &out, const Judge &judge)
{
    Account *account = accountOf(command.account);
    if (!account)
        return answer(Status::AccountUnknown);
    const bool isKeyed = !command.key.isNull();
    if (isKeyed) {
        const auto known = account->answers.find(command.key);
        if (known != account->answers.end()) {
            const Result &first = known->second.result;
            if (first.status == Status::KeyBurnt)
                return first;
            if (known->second.fingerprint != fingerprint)
                return answer(Status::KeyDiffers);
            Result again = first;
            again.status = Status::Exists;
            again.first = first.status;
            return again;
        }
        if (account->answers.size() >= m_limits.keysOfAccount)
            return answer(Status::TooManyActions);
    }
    const Result result = account->frozen ? answer(Status::AccountFrozen) : judge(*account);
    if (isKeyed && (result.status == Status::Accepted || !refusalFreesKey))
        remember(*account, command.key, {fingerprint, m_session, result}, out);
    return result;
}

void TwinMarket::remember(Account &account, ActionKey key, const Answer &given, Happened &out)
{
    account.answers.emplace(key, given);
    out.emplace_back(ActionAnswered{m_now, account.id, key, given.fingerprint, given.result.status,
                                    given.result.order, given.result.revoked});
}

Result TwinMarket::carryOut(const Deposit &command, Happened &out)
{
    return once(command, printOf(1, command.amount.value()), false, out, [&](Account &account) {
        if (command.amount <= Fen(0) || command.amount > Fen(kAmountBound - m_outside.value()))
            return answer(Status::BadAmount);
        account.available += command.amount;
        m_outside += command.amount;
        out.emplace_back(CashMoved{m_now, account.id, command.amount, account.available});
        return Result();
    });
}

Result TwinMarket::carryOut(const Withdraw &command, Happened &out)
{
    return once(command, printOf(2, command.amount.value()), false, out, [&](Account &account) {
        if (command.amount <= Fen(0) || !command.amount.inRange())
            return answer(Status::BadAmount);
        if (command.amount > account.available)
            return answer(Status::NotEnoughMoney);
        account.available -= command.amount;
        m_outside -= command.amount;
        out.emplace_back(CashMoved{m_now, account.id, -command.amount, account.available});
        return Result();
    });
}

Result TwinMarket::carryOut(const GrantHolding &command, Happened &out)
{
    const std::uint64_t print = printOf(3, command.collection.value(), command.quantity.value(),
                                        command.unitCost.value());
    return once(command, print, false, out, [&](Account &account) {
        Book *book = bookOf(command.collection);
        if (!book)
            return answer(Status::CollectionUnknown);
        CollectionView &facts = book->facts;
        if (command.quantity <= Quantity(0)
            || command.quantity > Quantity(facts.issued.value() - facts.circulating.value()))
            return answer(Status::BadQuantity);
        if (command.unitCost < Fen(0) || command.unitCost >= Fen(kPriceBound))
            return answer(Status::BadAmount);
        const Wide whole = Wide(command.unitCost.value()) * command.quantity.value();
        const Fen cost(static_cast<std::int64_t>(std::min<Wide>(whole, kAmountBound)));
        Holding &holding = account.holdings[command.collection.value()];
        holding.quantity += command.quantity;
        holding.cost = capped(holding.cost, cost);
        facts.circulating += command.quantity;
        out.emplace_back(HoldingMoved{m_now, account.id, command.collection, command.quantity, cost,
                                      holding.quantity});
        return Result();
    });
}

Result TwinMarket::carryOut(const PlaceOrder &command, Happened &out)
{
    const std::uint64_t print
        = printOf(4, command.collection.value(), static_cast<int>(command.side),
                  command.price.value(), command.quantity.value());
    return once(command, print, command.refusalFreesKey, out,
                [&](Account &account) { return place(command, account, out); });
}

Status TwinMarket::judge(const PlaceOrder &command, Account &account, Book *book,
                         Order &order) const
{
    if (!m_open)
        return Status::MarketClosed;
    if (!book)
        return Status::CollectionUnknown;
    const CollectionView &facts = book->facts;
    if (facts.suspended)
        return Status::CollectionSuspended;
    if (command.price < facts.day.lower || command.price > facts.day.upper
        || !isPrice(command.price))
        return Status::PriceOutsideLimits;
    if (command.price.value() % facts.tick.value() != 0)
        return Status::BadTick;
    if (command.quantity < Quantity(1) || command.quantity > m_limits.orderQuantity
        || command.quantity.value() % facts.lot.value() != 0)
        return Status::BadQuantity;

    const auto rate = account.rates.find(command.collection.value());
    order.fee = rate == account.rates.end() ? account.fee : rate->second;
    if (command.side == Side::Buy) {
        const Fen rest = command.price * command.quantity;
        order.feeCap = share(rest, order.fee);
        const Fen shortfall = rest + order.feeCap - account.available;
        if (shortfall > Fen(0)) {
            // What a client that counts in float shows as its highest quantity is taken.
            const Fen slack(std::min((rest + order.feeCap).value() >> 22, order.feeCap.value()));
            if (shortfall > slack)
                return Status::NotEnoughMoney;
            order.feeCap -= shortfall;
        }
        order.frozenCash = rest + order.feeCap;
    } else {
        const auto holding = account.holdings.find(command.collection.value());
        if (holding == account.holdings.end()
            || command.quantity > holding->second.quantity - holding->second.frozen)
            return Status::NotEnoughHoldings;
    }
    if (account.openOrders >= m_limits.openOrdersOfAccount)
        return Status::TooManyOpenOrders;
    if (m_orders.size() >= m_limits.openOrders || m_lastOrder.value() >= OrderNumber::most)
        return Status::MarketFull;
    return Status::Accepted;
}

Result TwinMarket::place(const PlaceOrder &command, Account &account, Happened &out)
{
    Book *book = bookOf(command.collection);
    Order order;
    const Status status = judge(command, account, book, order);
    if (status != Status::Accepted)
        return answer(status);

    m_lastOrder = OrderNumber(m_lastOrder.value() + 1);
    order.number = m_lastOrder;
    order.account = &account;
    order.book = book;
    order.holding = &account.holdings[command.collection.value()];
    order.side = command.side;
    order.price = command.price;
    order.remaining = command.quantity;
    account.available -= order.frozenCash;
    account.frozenCash += order.frozenCash;
    if (order.side == Side::Sell)
        order.holding->frozen += command.quantity;
    ++account.openOrders;
    out.emplace_back(OrderAccepted{m_now, order.number, account.id, command.collection,
                                   command.side, command.price, command.quantity, order.fee,
                                   order.frozenCash, order.feeCap});
    if (order.side == Side::Buy)
        match(order, book->asks, out);
    else
        match(order, book->bids, out);
    if (order.remaining == Quantity(0))
        finish(order, DoneReason::Filled, out);
    else if (order.side == Side::Buy)
        rest(order, book->bids);
    else
        rest(order, book->asks);

    Result result;
    result.order = order.number;
    return result;
}

template <class Levels>
void TwinMarket::match(Order &taker, Levels &against, Happened &out)
{
    while (taker.remaining > Quantity(0) && !against.empty()) {
        const auto best = against.begin();
        const bool crosses
            = taker.side == Side::Buy ? taker.price >= best->first : taker.price <= best->first;
        if (!crosses)
            return;
        Queue &queue = best->second;
        Order &maker = queue.orders.front();
        if (maker.account == taker.account) {
            queue.quantity -= maker.remaining;
            finish(maker, DoneReason::SelfTrade, out);
        } else {
            const Quantity before = maker.remaining;
            trade(taker, maker, out);
            queue.quantity -= before - maker.remaining;
            if (maker.remaining > Quantity(0))
                return;
            finish(maker, DoneReason::Filled, out);
        }
        m_orders.erase(maker.number.value());
        queue.orders.pop_front();
        if (queue.orders.empty())
            against.erase(best);
    }
}

void TwinMarket::trade(Order &taker, Order &maker, Happened &out)
{
    Order &buy = taker.side == Side::Buy ? taker : maker;
    Order &sell = taker.side == Side::Buy ? maker : taker;
    m_lastDeal = Sequence(m_lastDeal.value() + 1);

    Deal deal{};
    deal.at = m_now;
    deal.sequence = m_lastDeal;
    deal.collection = taker.book->facts.collection;
    deal.maker = maker.number;
    deal.taker = taker.number;
    deal.takerSide = taker.side;
    deal.buyer = buy.account->id;
    deal.seller = sell.account->id;
    deal.price = maker.price;
    deal.quantity = std::min(taker.remaining, maker.remaining);
    const Fen amount = deal.price * deal.quantity;
    deal.buyerFee = buy.feeAfter(buy.amount + amount) - buy.charged;
    deal.sellerFee = sell.feeAfter(sell.amount + amount) - sell.charged;

    for (Order *order : {&taker, &maker}) {
        order->remaining -= deal.quantity;
        order->amount += amount;
    }
    buy.charged += deal.buyerFee;
    sell.charged += deal.sellerFee;
    const Fen stillFrozen = buy.needsFrozen();
    const Fen thawed = buy.frozenCash - stillFrozen;
    deal.released = thawed - amount - deal.buyerFee;
    buy.frozenCash = stillFrozen;
    buy.account->frozenCash -= thawed;
    buy.account->available += deal.released;
    sell.account->available += amount - deal.sellerFee;
    m_fees += deal.buyerFee + deal.sellerFee;

    // The cost goes with the pieces, so that what is left keeps its average.
    const Fen costGiven(bounded(Wide(sell.holding->cost.value()) * deal.quantity.value()
                                / sell.holding->quantity.value()));
    sell.holding->cost -= costGiven;
    sell.holding->quantity -= deal.quantity;
    sell.holding->frozen -= deal.quantity;
    buy.holding->quantity += deal.quantity;
    buy.holding->cost = capped(buy.holding->cost, amount + deal.buyerFee);

    countDeal(taker.book->facts.day, deal);
    out.emplace_back(deal);
}

// Gives back what an order still has frozen, and says so. It leaves its list by the caller.
void TwinMarket::finish(const Order &order, DoneReason reason, Happened &out)
{
    OrderDone done{};
    done.at = m_now;
    done.order = order.number;
    done.account = order.account->id;
    done.collection = order.book->facts.collection;
    done.reason = reason;
    done.unfilled = order.remaining;
    done.releasedCash = order.frozenCash;
    if (order.side == Side::Sell)
        done.releasedPieces = order.remaining;
    order.account->frozenCash -= done.releasedCash;
    order.account->available += done.releasedCash;
    order.holding->frozen -= done.releasedPieces;
    --order.account->openOrders;
    out.emplace_back(done);
}

template <class Levels>
void TwinMarket::rest(const Order &order, Levels &levels)
{
    Queue &queue = levels[order.price];
    queue.orders.push_back(order);
    queue.quantity += order.remaining;
    m_orders.emplace(order.number.value(), std::prev(queue.orders.end()));
}

void TwinMarket::revoke(OrderNumber number, DoneReason reason, Happened &out)
{
    const auto found = m_orders.find(number.value());
    const auto order = found->second;
    finish(*order, reason, out);
    const auto leave = [&](auto &levels) {
        const auto queue = levels.find(order->price);
        queue->second.quantity -= order->remaining;
        queue->second.orders.erase(order);
        if (queue->second.orders.empty())
            levels.erase(queue);
    };
    if (order->side == Side::Buy)
        leave(order->book->bids);
    else
        leave(order->book->asks);
    m_orders.erase(found);
}

Status TwinMarket::judgeRevoke(OrderNumber number, const Account &account) const
{
    if (number <= OrderNumber(0) || number > m_lastOrder)
        return Status::OrderUnknown;
    const auto found = m_orders.find(number.value());
    if (found == m_orders.end())
        return Status::OrderDone;
    return found->second->account == &account ? Status::Accepted : Status::NotYourOrder;
}

Result TwinMarket::carryOut(const RevokeOrders &command, Happened &out)
{
    std::uint64_t print = 5;
    for (const OrderNumber number : command.orders)
        print = printOf(print, number.value());
    return once(command, print, false, out, [&](Account &account) {
        if (command.orders.empty() || command.orders.size() > kMostRevokes)
            return answer(Status::BadQuantity);
        Result result = answer(judgeRevoke(command.orders.front(), account));
        for (const OrderNumber number : command.orders) {
            if (judgeRevoke(number, account) == Status::Accepted) {
                revoke(number, DoneReason::Revoked, out);
                ++result.revoked;
                result.status = Status::Accepted;
            }
        }
        return result;
    });
}

Result TwinMarket::carryOut(const SettleDay &command, Happened &out)
{
    if (command.nextDay < m_day || !command.nextDay.inRange())
        return answer(Status::BadDay);
    std::vector<OrderNumber> open;
    for (const auto &entry : m_orders)
        open.push_back(OrderNumber(entry.first));
    std::sort(open.begin(), open.end());
    for (const OrderNumber number : open)
        revoke(number, DoneReason::Ended, out);

    for (Book *book : m_listed) {
        DayFigures &day = book->facts.day;
        CollectionSettled settled{};
        settled.at = m_now;
        settled.collection = book->facts.collection;
        settled.day = m_day;
        settled.session = m_session;
        settled.open = day.open;
        settled.high = day.high;
        settled.low = day.low;
        settled.last = day.last;
        settled.volume = day.volume;
        settled.amount = day.amount;
        settled.previousClose = day.deals > 0 ? day.last : day.previousClose;
        const PriceLimits range = priceLimits(settled.previousClose, book->facts.limit);
        settled.lower = range.lower;
        settled.upper = range.upper;
        day = DayFigures();
        day.previousClose = settled.previousClose;
        day.lower = range.lower;
        day.upper = range.upper;
        out.emplace_back(settled);
    }
    m_day = command.nextDay;
    m_session = Sequence(m_session.value() + 1);
    for (auto &entry : m_accounts) {
        auto &answers = entry.second.answers;
        for (auto given = answers.begin(); given != answers.end();) {
            if (given->second.session.value() <= m_session.value() - kKeySessions)
                given = answers.erase(given);
            else
                ++given;
        }
    }
    out.emplace_back(DaySettled{m_now, m_day, m_session});
    return {};
}

Result TwinMarket::carryOut(const SetPhase &command, Happened &out)
{
    if (m_open != command.open) {
        m_open = command.open;
        out.emplace_back(PhaseSet{m_now, m_open});
    }
    return {};
}

Result TwinMarket::carryOut(const BurnKey &command, Happened &out)
{
    Account *account = accountOf(command.account);
    if (!account)
        return answer(Status::AccountUnknown);
    if (command.key.isNull())
        return answer(Status::BadKey);
    const auto known = account->answers.find(command.key);
    if (known != account->answers.end()) {
        Result again = known->second.result;
        if (again.status == Status::KeyBurnt)
            return again;
        again.first = again.status;
        again.status = Status::Exists;
        return again;
    }
    if (account->answers.size() >= m_limits.keysOfAccount)
        return answer(Status::TooManyActions);
    const Result burnt = answer(Status::KeyBurnt);
    remember(*account, command.key, {0, m_session, burnt}, out);
    return burnt;
}

std::optional<AccountView> TwinMarket::account(AccountId id) const
{
    const Account *found = accountOf(id);
    if (!found)
        return std::nullopt;
    AccountView view;
    view.account = found->id;
    view.frozen = found->frozen;
    view.fee = found->fee;
    view.available = found->available;
    view.frozenCash = found->frozenCash;
    view.openOrders = static_cast<std::int64_t>(found->openOrders);
    return view;
}

std::vector<HoldingView> TwinMarket::holdingsOf(AccountId id) const
{
    std::vector<HoldingView> views;
    const Account *found = accountOf(id);
    if (!found)
        return views;
    for (const auto &[collection, holding] : found->holdings) {
        if (holding.quantity > Quantity(0))
            views.push_back(
                {CollectionId(collection), holding.quantity, holding.frozen, holding.cost});
    }
    std::sort(views.begin(), views.end(), [](const HoldingView &a, const HoldingView &b) {
        return a.collection < b.collection;
    });
    return views;
}

std::optional<CollectionView> TwinMarket::collection(CollectionId id) const
{
    const Book *book = bookOf(id);
    if (!book)
        return std::nullopt;
    return book->facts;
}

std::vector<Level> TwinMarket::levels(CollectionId id, Side side) const
{
    std::vector<Level> views;
    const auto add = [&views](const auto &levels) {
        for (const auto &[price, queue] : levels)
            views.push_back(
                {price, queue.quantity, static_cast<std::int64_t>(queue.orders.size())});
    };
    if (const Book *book = bookOf(id)) {
        if (side == Side::Buy)
            add(book->bids);
        else
            add(book->asks);
    }
    return views;
}
