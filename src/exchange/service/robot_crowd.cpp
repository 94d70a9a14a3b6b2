#include "exchange/service/robot_crowd.h"

#include <algorithm>
#include <cmath>

namespace zvx {

namespace {

constexpr std::int64_t milli = 1000;
/// Levels that a book should show on either side.
constexpr int wantedLevels = 5;
/// Books that are laid out anew in one step, after a start or a settlement.
constexpr int fillsPerStep = 24;
/// Collections that get their first deal of a session in one step.
constexpr int openingsPerStep = 10;
/// How far back the orders of an earlier run are looked for, and how many at a time.
constexpr std::int64_t sweepReach = 20'000;
constexpr std::int64_t sweepChunk = 1000;
constexpr Fen pocketMoney{2'000'000'000};

AccountId accountOf(int robot)
{
    return AccountId(RobotCrowd::firstAccount + robot);
}

} // namespace

SeededSource::SeededSource(std::uint64_t seed) : m_state(seed) { }

std::uint64_t SeededSource::next()
{
    // SplitMix64: small, well mixed, and the same everywhere, unlike the library's distributions.
    m_state += 0x9E3779B97F4A7C15ull;
    std::uint64_t z = m_state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

std::int64_t SeededSource::below(std::int64_t bound)
{
    return static_cast<std::int64_t>((next() >> 1) % static_cast<std::uint64_t>(bound));
}

std::int64_t SeededSource::between(std::int64_t least, std::int64_t most)
{
    return least + below(most - least + 1);
}

/// What one step may still ask for.
class RobotCrowd::Turn
{
public:
    Turn(RobotCrowd &crowd, std::int64_t nowMs, const Books &allBooks, std::size_t freeRoom,
         std::vector<Wish> &wishes)
        : now(nowMs), books(allBooks), m_crowd(crowd), m_room(freeRoom), m_out(wishes)
    {
    }

    bool hasRoom() const { return m_room > 0; }

    void wish(Command command, int account, std::size_t book)
    {
        const std::uint64_t token = ++m_crowd.m_lastToken;
        m_crowd.m_pending.emplace(token, Pending{account, book, now, command});
        m_out.push_back({token, std::move(command)});
        --m_room;
    }

    const std::int64_t now;
    const Books &books;

private:
    RobotCrowd &m_crowd;
    std::size_t m_room;
    std::vector<Wish> &m_out;
};

RobotCrowd::RobotCrowd(std::uint64_t seed, std::vector<Listing> listings,
                       const RobotOptions &options)
    : m_source(seed), m_options(options),
      m_moneyOnItsWay(static_cast<std::size_t>(options.accounts))
{
    for (int robot = options.accounts; robot > 0; --robot)
        m_unopened.push_back(robot - 1);
    for (Listing &listing : listings) {
        Book book;
        book.listing = listing;
        m_popularity.push_back(m_books.size());
        m_books.push_back(std::move(book));
    }
    for (std::size_t i = m_popularity.size(); i > 1; --i) {
        const auto other = static_cast<std::size_t>(m_source.below(static_cast<std::int64_t>(i)));
        std::swap(m_popularity[i - 1], m_popularity[other]);
    }
}

void RobotCrowd::step(std::int64_t nowMs, const Books &books, std::size_t room,
                      std::vector<Wish> &out)
{
    if (m_books.empty())
        return;
    Turn turn(*this, nowMs, books, room, out);
    const std::int64_t passed
        = m_lastStep < 0 ? 0 : std::min<std::int64_t>(nowMs - m_lastStep, 2000);
    m_lastStep = nowMs;
    if (!m_unopened.empty()) {
        openAccounts(turn);
        return;
    }
    m_credit += std::llround(static_cast<double>(passed) * m_options.ordersPerSecond);
    helpOut(turn);
    fillNext(turn);
    revokeStale(turn);
    sweepOldRun(turn);
    while (m_credit >= milli && turn.hasRoom()) {
        m_credit -= milli;
        act(turn);
    }
    // What there was no room for is given up, not saved for a flood.
    m_credit = std::min<std::int64_t>(m_credit, milli);
}

void RobotCrowd::openAccounts(Turn &turn)
{
    while (!m_unopened.empty() && turn.hasRoom()) {
        OpenAccount open;
        open.account = accountOf(m_unopened.back());
        open.fee = PartsPerMillion(0);
        turn.wish(open, m_unopened.back(), 0);
        m_unopened.pop_back();
    }
}

/// An earlier run may have left orders that nobody remembers. Their numbers are below the first
/// one of this run, and a revoke of numbers judges each by itself.
void RobotCrowd::sweepOldRun(Turn &turn)
{
    if (!m_sweepKnown || m_sweepAccount >= m_options.accounts || !turn.hasRoom())
        return;
    RevokeOrders revoke;
    revoke.account = accountOf(m_sweepAccount);
    for (std::int64_t i = 0; i < sweepChunk && m_sweepTo - i > m_sweepFrom; ++i)
        revoke.orders.push_back(OrderNumber(m_sweepTo - i));
    if (!revoke.orders.empty()) {
        m_sweepTo -= static_cast<std::int64_t>(revoke.orders.size());
        turn.wish(std::move(revoke), m_sweepAccount, 0);
    }
    if (m_sweepTo <= m_sweepFrom) {
        ++m_sweepAccount;
        m_sweepTo = m_sweepFrom + m_sweepLength;
    }
}

void RobotCrowd::helpOut(Turn &turn)
{
    while (!m_help.empty() && turn.hasRoom()) {
        const auto *deposit = std::get_if<Deposit>(&m_help.back());
        const auto robot = deposit ? deposit->account.value() - firstAccount : 0;
        turn.wish(std::move(m_help.back()), static_cast<int>(robot), 0);
        m_help.pop_back();
    }
}

void RobotCrowd::fillNext(Turn &turn)
{
    int filled = 0;
    int opened = 0;
    for (std::size_t looked = 0; looked < m_books.size() && filled < fillsPerStep; ++looked) {
        m_fillCursor = (m_fillCursor + 1) % m_books.size();
        Book &book = m_books[m_fillCursor];
        // The answer to the last fill may not have been published yet.
        if (book.listing.suspended || book.waiting > 0 || turn.now - book.filledAt < 2000)
            continue;
        if (!turn.hasRoom())
            return;
        const TradeLevels &levels = *turn.books(m_fillCursor);
        const int missingBuys = wantedLevels - static_cast<int>(levels.buys.size());
        const int missingSells = wantedLevels - static_cast<int>(levels.sells.size());
        if (missingBuys >= 3 || missingSells >= 3) {
            ++filled;
            book.filledAt = turn.now;
            wander(book, levels);
            for (int i = 0; i < missingBuys; ++i)
                quote(turn, m_fillCursor, levels, Side::Buy, wantedLevels - missingBuys + i);
            for (int i = 0; i < missingSells; ++i)
                quote(turn, m_fillCursor, levels, Side::Sell, wantedLevels - missingSells + i);
        } else if (!levels.latest && opened < openingsPerStep) {
            ++opened;
            book.filledAt = turn.now;
            wander(book, levels);
            take(turn, m_fillCursor, levels);
        }
    }
}

void RobotCrowd::revokeStale(Turn &turn)
{
    const std::size_t looks = std::min<std::size_t>(m_books.size(), 16);
    for (std::size_t i = 0; i < looks && turn.hasRoom(); ++i) {
        m_staleCursor = (m_staleCursor + 1) % m_books.size();
        const auto &resting = m_books[m_staleCursor].resting;
        std::size_t stale = 0;
        while (stale < resting.size() && turn.now - resting[stale].since > m_options.restingMs)
            ++stale;
        revokeOldest(turn, m_staleCursor, stale);
    }
}

void RobotCrowd::revokeOldest(Turn &turn, std::size_t index, std::size_t count)
{
    auto &resting = m_books[index].resting;
    while (count > 0 && turn.hasRoom()) {
        // One command an account: take the oldest one's account, and its other old orders along.
        RevokeOrders revoke;
        const int account = resting.front().account;
        revoke.account = accountOf(account);
        for (std::size_t i = 0; i < count;) {
            if (resting[i].account == account) {
                revoke.orders.push_back(resting[i].order);
                resting.erase(resting.begin() + static_cast<std::ptrdiff_t>(i));
                --count;
            } else {
                ++i;
            }
        }
        turn.wish(std::move(revoke), account, index);
    }
}

void RobotCrowd::act(Turn &turn)
{
    const std::size_t index = pickBook(turn.now);
    Book &book = m_books[index];
    if (book.listing.suspended)
        return;
    const TradeLevels &levels = *turn.books(index);
    wander(book, levels);
    if (book.resting.size() >= m_options.restingOfCollection)
        revokeOldest(turn, index, book.resting.size() - m_options.restingOfCollection / 2);
    if (m_source.chance(60) && !(levels.buys.empty() && levels.sells.empty())) {
        take(turn, index, levels);
        return;
    }
    const bool buysAreThinner = levels.buys.size() < levels.sells.size();
    const bool even = levels.buys.size() == levels.sells.size();
    const Side side = (even ? m_source.chance(50) : buysAreThinner) ? Side::Buy : Side::Sell;
    quote(turn, index, levels, side, static_cast<int>(m_source.below(3)));
}

void RobotCrowd::take(Turn &turn, std::size_t index, const TradeLevels &levels)
{
    const std::int64_t value = m_books[index].value / milli;
    const bool dear = !levels.buys.empty() && levels.buys.front().price.value() >= value;
    const bool cheap = !levels.sells.empty() && levels.sells.front().price.value() <= value;
    bool buy = m_source.chance(50);
    if (dear != cheap)
        buy = cheap;
    if ((buy ? levels.sells : levels.buys).empty())
        buy = !buy;
    const PriceLevel &best = (buy ? levels.sells : levels.buys).front();
    const std::int64_t usual = usualQuantity(m_books[index], best.price.value());
    const std::int64_t quantity
        = m_source.chance(25) ? best.quantity.value() : std::min(usual, best.quantity.value());
    place(turn, index, buy ? Side::Buy : Side::Sell, best.price.value(), quantity);
}

void RobotCrowd::quote(Turn &turn, std::size_t index, const TradeLevels &levels, Side side,
                       int depth)
{
    const std::int64_t value = m_books[index].value / milli;
    const std::int64_t step = std::max<std::int64_t>(1, value / 700);
    const std::int64_t distance = step * (depth + 1) - m_source.below(step);
    std::int64_t price = side == Side::Buy ? value - distance : value + distance;
    if (side == Side::Buy && !levels.sells.empty())
        price = std::min(price, levels.sells.front().price.value() - 1);
    if (side == Side::Sell && !levels.buys.empty())
        price = std::max(price, levels.buys.front().price.value() + 1);
    if (price < levels.lowerLimit.value() || price > levels.upperLimit.value())
        return;
    place(turn, index, side, price, usualQuantity(m_books[index], price));
}

void RobotCrowd::place(Turn &turn, std::size_t index, Side side, std::int64_t price,
                       std::int64_t quantity)
{
    if (!turn.hasRoom())
        return;
    const int account = static_cast<int>(m_source.below(m_options.accounts));
    PlaceOrder order;
    order.account = accountOf(account);
    order.collection = m_books[index].listing.id;
    order.side = side;
    order.price = Fen(price);
    order.quantity = Quantity(std::max<std::int64_t>(1, quantity));
    ++m_books[index].waiting;
    turn.wish(order, account, index);
}

/// Pieces for some hundreds to some thousands of yuan, never much of an issue.
std::int64_t RobotCrowd::usualQuantity(const Book &book, std::int64_t price)
{
    const std::int64_t worth = m_source.between(20'000, 600'000);
    const std::int64_t most = std::max<std::int64_t>(1, book.listing.listed.value() / 2000);
    return std::clamp<std::int64_t>(worth / std::max<std::int64_t>(1, price), 1, most);
}

void RobotCrowd::wander(Book &book, const TradeLevels &levels)
{
    const std::int64_t close = levels.previousClose.value() * milli;
    if (book.value == 0)
        book.value = levels.latest ? levels.latest->value() * milli : close;
    // Three even numbers make a bell; its edge is six thousandths of the price.
    const std::int64_t edge = std::max<std::int64_t>(milli, book.value / 500);
    for (int i = 0; i < 3; ++i)
        book.value += m_source.between(-edge, edge);
    if (levels.latest)
        book.value += (levels.latest->value() * milli - book.value) / 16;
    book.value += (close - book.value) / 200;
    const std::int64_t margin
        = (levels.upperLimit.value() - levels.lowerLimit.value()) * milli / 20;
    book.value = std::clamp(book.value, levels.lowerLimit.value() * milli + margin,
                            levels.upperLimit.value() * milli - margin);
}

/// Trade gathers where trade is: half of the orders go to the few that are hot just now.
std::size_t RobotCrowd::pickBook(std::int64_t now)
{
    if (m_hot.empty() || now - m_hotSince >= m_options.hotMs) {
        m_hotSince = now;
        m_hot.resize(std::max<std::size_t>(1, m_options.hotCollections));
        for (std::size_t &each : m_hot)
            each = pickPopular();
    }
    if (m_source.chance(50))
        return m_hot[static_cast<std::size_t>(
            m_source.below(static_cast<std::int64_t>(m_hot.size())))];
    return pickPopular();
}

/// Some collections are asked for far more than others.
std::size_t RobotCrowd::pickPopular()
{
    const auto count = static_cast<std::int64_t>(m_popularity.size());
    const std::int64_t u = m_source.below(1'000'000);
    return m_popularity[static_cast<std::size_t>(count * (u * u / 1'000'000) / 1'000'000)];
}

void RobotCrowd::askForMoney(int robot)
{
    if (m_moneyOnItsWay[static_cast<std::size_t>(robot)])
        return;
    m_moneyOnItsWay[static_cast<std::size_t>(robot)] = true;
    Deposit deposit;
    deposit.account = accountOf(robot);
    deposit.amount = pocketMoney;
    m_help.push_back(deposit);
}

void RobotCrowd::answered(std::uint64_t token, const Result &result)
{
    const auto found = m_pending.find(token);
    if (found == m_pending.end())
        return;
    const Pending pending = std::move(found->second);
    m_pending.erase(found);
    if (std::holds_alternative<OpenAccount>(pending.command) && result.status == Status::Accepted)
        askForMoney(pending.account);
    if (std::holds_alternative<Deposit>(pending.command))
        m_moneyOnItsWay[static_cast<std::size_t>(pending.account)] = false;
    const auto *order = std::get_if<PlaceOrder>(&pending.command);
    if (!order)
        return;
    Book &book = m_books[pending.book];
    --book.waiting;
    if (result.status == Status::Accepted) {
        book.resting.push_back({result.order, pending.account, pending.since});
        if (!m_sweepKnown) {
            m_sweepKnown = true;
            m_sweepTo = result.order.value() - 1;
            m_sweepFrom = std::max<std::int64_t>(0, m_sweepTo - sweepReach);
            m_sweepLength = m_sweepTo - m_sweepFrom;
        }
    } else if (result.status == Status::NotEnoughMoney) {
        askForMoney(pending.account);
    } else if (result.status == Status::NotEnoughHoldings) {
        GrantHolding grant;
        grant.account = order->account;
        grant.collection = order->collection;
        grant.quantity = Quantity(std::max<std::int64_t>(1, book.listing.listed.value() / 64));
        grant.unitCost = order->price;
        m_help.push_back(grant);
    }
}

void RobotCrowd::dropped(std::uint64_t token)
{
    const auto found = m_pending.find(token);
    if (found == m_pending.end())
        return;
    if (std::holds_alternative<PlaceOrder>(found->second.command))
        --m_books[found->second.book].waiting;
    if (std::holds_alternative<Deposit>(found->second.command))
        m_moneyOnItsWay[static_cast<std::size_t>(found->second.account)] = false;
    if (std::holds_alternative<OpenAccount>(found->second.command))
        m_unopened.push_back(found->second.account);
    m_pending.erase(found);
}

void RobotCrowd::sessionEnded()
{
    for (Book &book : m_books)
        book.resting.clear();
    m_sweepAccount = m_options.accounts;
}

} // namespace zvx
