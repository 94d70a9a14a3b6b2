#include "orderstream.h"

#include <algorithm>

using namespace zvx;

namespace {

// Orders that rest in one book before withdrawals keep it from growing.
constexpr std::size_t kRestingOfBook = 120;
constexpr std::size_t kBooksOfMember = 25;

} // namespace

std::uint64_t Chance::bits()
{
    // SplitMix64.
    m_state += 0x9E3779B97F4A7C15u;
    std::uint64_t z = m_state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

std::int64_t Chance::halving()
{
    std::int64_t count = 0;
    while (count < 40 && percent(50))
        ++count;
    return count;
}

Floor::Floor(std::size_t books, std::size_t accounts, std::uint64_t seed)
    : m_books(books), m_accounts(accounts)
{
    Chance chance(seed);
    for (std::size_t i = 0; i < books; ++i) {
        m_books[i].id = CollectionId(static_cast<std::int64_t>(1001 + i));
        m_books[i].previousClose = Fen(chance.between(500, 20'000));
    }
    for (std::size_t account = 1; account <= accounts; ++account) {
        for (std::size_t i = 0; i < std::min(kBooksOfMember, books); ++i) {
            Book &book
                = m_books[static_cast<std::size_t>(chance.below(static_cast<std::int64_t>(books)))];
            const AccountId id(static_cast<std::int64_t>(account));
            if (book.members.empty() || book.members.back() != id)
                book.members.push_back(id);
        }
    }
    for (Book &book : m_books) {
        if (book.members.empty())
            book.members = {AccountId(1), AccountId(2)};
    }
}

CatalogueMarket Floor::catalogue() const
{
    CatalogueMarket market;
    market.platform = "lc";
    market.name = "bench";
    market.prefix = "/lc/bench/";
    market.limit = kDefaultLimit;
    market.fee = kDefaultFee;
    market.types = {{1, "type"}};
    for (const Book &book : m_books) {
        CatalogueCollection entry;
        entry.id = book.id;
        entry.code = std::to_string(book.id.value());
        entry.name = "piece " + entry.code;
        entry.type = 1;
        entry.listed = Quantity(issued);
        entry.previousClose = book.previousClose;
        market.collections.push_back(entry);
    }
    return market;
}

std::vector<Command> Floor::listing() const
{
    std::vector<Command> commands;
    for (const Book &book : m_books)
        commands.push_back(ListCollection{book.id, book.previousClose, Quantity(issued)});
    commands.push_back(SetPhase{true});
    return commands;
}

std::vector<Command> Floor::opening() const
{
    std::vector<Command> commands;
    for (std::size_t i = 1; i <= m_accounts; ++i) {
        const AccountId account(static_cast<std::int64_t>(i));
        OpenAccount open{account};
        if (i % 10 == 0)
            open.rates.emplace_back(m_books[i % m_books.size()].id, PartsPerMillion(1000));
        commands.push_back(open);
        // Every fiftieth purse is thin, and its orders are refused now and then.
        commands.push_back(Deposit{account, Fen(i % 50 == 0 ? 200'000 : 10'000'000'000)});
    }
    for (const Book &book : m_books) {
        for (const AccountId account : book.members)
            commands.push_back(
                GrantHolding{account, book.id, Quantity(100'000), book.previousClose});
    }
    return commands;
}

OrderStream::OrderStream(const Floor &floor, std::uint64_t seed)
    : m_floor(floor), m_chance(seed), m_keyBits(~seed), m_places(floor.books().size())
{
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const Floor::Book &book = floor.books()[i];
        m_places[i].middle = book.previousClose.value();
        const auto id = static_cast<std::size_t>(book.id.value());
        if (m_bookOf.size() <= id)
            m_bookOf.resize(id + 1);
        m_bookOf[id] = i;
    }
    for (const Command &command : floor.listing())
        carryOut(command);
    for (const Command &command : floor.opening())
        carryOut(command);
}

std::vector<Command> OrderStream::make(std::size_t count)
{
    std::vector<Command> commands;
    commands.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        commands.push_back(i == count / 2 ? Command(SettleDay{m_market.day()}) : next());
        carryOut(commands.back());
    }
    return commands;
}

Command OrderStream::next()
{
    const std::size_t book = pickBook();
    if (m_chance.percent(1))
        return money();
    if (m_chance.percent(2))
        return somethingElse(book);
    const std::size_t resting = m_places[book].resting.size();
    // A book that is full enough loses as many orders as it gets.
    const bool isFull = resting >= kRestingOfBook;
    if (resting > 0 && m_chance.percent(isFull ? 60 : 35))
        return revoke(book);
    return order(book);
}

Command OrderStream::order(std::size_t book)
{
    ++m_kinds.orders;
    Place &place = m_places[book];
    const Floor::Book &facts = m_floor.books()[book];
    const std::int64_t close = facts.previousClose.value();
    place.middle = std::clamp(place.middle + m_chance.between(-1, 1), close - close / 20,
                              close + close / 20);
    PlaceOrder order;
    order.account = pickMember(book);
    order.collection = facts.id;
    order.side = m_chance.percent(50) ? Side::Buy : Side::Sell;
    // A fifth meets the middle or crosses it; the others line up behind it, most of them close by.
    const std::int64_t away = m_chance.percent(20)
        ? -m_chance.halving()
        : 1 + m_chance.halving() * m_chance.between(1, 3);
    order.price = Fen(order.side == Side::Buy ? place.middle - away : place.middle + away);
    order.quantity
        = Quantity(m_chance.percent(85) ? m_chance.between(1, 10) : m_chance.between(10, 200));
    order.key = newKey();
    order.refusalFreesKey = m_chance.percent(2);
    return order;
}

Command OrderStream::revoke(std::size_t book)
{
    ++m_kinds.revokes;
    const std::vector<Resting> &resting = m_places[book].resting;
    const auto pick = [&] {
        return resting[static_cast<std::size_t>(
            m_chance.below(static_cast<std::int64_t>(resting.size())))];
    };
    const Resting first = pick();
    RevokeOrders revoke;
    revoke.account = first.account;
    revoke.orders = {first.order};
    revoke.key = newKey();
    // Some end several at once, some of which are others' orders.
    if (m_chance.percent(3)) {
        for (int i = 0; i < 3; ++i)
            revoke.orders.push_back(pick().order);
    }
    // And some come too late, or have a wrong number.
    if (m_chance.percent(4))
        revoke.orders.front() = OrderNumber(m_chance.between(1, m_market.lastOrder().value() + 50));
    return revoke;
}

Command OrderStream::money()
{
    ++m_kinds.money;
    const AccountId account(m_chance.between(1, static_cast<std::int64_t>(m_floor.accounts())));
    if (m_chance.percent(50))
        return Deposit{account, Fen(m_chance.between(0, 100'000)), newKey()};
    return Withdraw{account, Fen(m_chance.between(1, 100'000)), newKey()};
}

Command OrderStream::somethingElse(std::size_t book)
{
    ++m_kinds.others;
    if (!m_again.empty() && m_chance.percent(40)) {
        const Command again = m_again[static_cast<std::size_t>(
            m_chance.below(static_cast<std::int64_t>(m_again.size())))];
        if (const auto *order = std::get_if<PlaceOrder>(&again)) {
            if (m_chance.percent(20))
                return BurnKey{order->account, order->key};
            if (m_chance.percent(20)) {
                PlaceOrder other = *order;
                other.quantity += Quantity(1);
                return other;
            }
        }
        return again;
    }
    PlaceOrder wrong = std::get<PlaceOrder>(order(book));
    --m_kinds.orders;
    switch (m_chance.below(7)) {
    case 0:
        wrong.price = Fen(wrong.price.value() * 2);
        break;
    case 1:
        wrong.quantity = Quantity(m_chance.between(-1, 0));
        break;
    case 2:
        wrong.collection = CollectionId(7);
        break;
    case 3:
        wrong.account = AccountId(static_cast<std::int64_t>(m_floor.accounts() + 1));
        break;
    case 4:
        wrong.side = Side::Sell;
        wrong.quantity = Quantity(50'000'000);
        break;
    case 5:
        return BurnKey{wrong.account, wrong.key};
    default:
        return FreezeAccount{AccountId(static_cast<std::int64_t>(m_floor.accounts())),
                             m_chance.percent(30)};
    }
    return wrong;
}

std::size_t OrderStream::pickBook()
{
    // Trading gathers: half of it is in about a quarter of the books.
    const double part = m_chance.part();
    return static_cast<std::size_t>(part * part * static_cast<double>(m_places.size()));
}

AccountId OrderStream::pickMember(std::size_t book)
{
    const auto &members = m_floor.books()[book].members;
    return members[static_cast<std::size_t>(
        m_chance.below(static_cast<std::int64_t>(members.size())))];
}

ActionKey OrderStream::newKey()
{
    // Random as clients' keys are, and never the same twice.
    return {m_keyBits.bits(), ++m_keys};
}

void OrderStream::carryOut(const Command &command)
{
    m_happened.clear();
    const Result result = m_market.apply(command, TimeMs(0), m_happened);
    m_kinds.refusals += result.status != Status::Accepted;
    if (std::holds_alternative<PlaceOrder>(command)) {
        if (m_again.size() < 1000)
            m_again.push_back(command);
        else
            m_again[m_keys % m_again.size()] = command;
    }
    for (const Event &event : m_happened) {
        if (const auto *accepted = std::get_if<OrderAccepted>(&event)) {
            const std::size_t book
                = m_bookOf[static_cast<std::size_t>(accepted->collection.value())];
            auto &resting = m_places[book].resting;
            const auto number = static_cast<std::size_t>(accepted->order.value());
            if (m_where.size() <= number)
                m_where.resize(number + 1);
            m_where[number]
                = {static_cast<std::uint32_t>(book), static_cast<std::uint32_t>(resting.size())};
            resting.push_back({accepted->order, accepted->account});
        } else if (const auto *done = std::get_if<OrderDone>(&event)) {
            const auto [book, at] = m_where[static_cast<std::size_t>(done->order.value())];
            auto &resting = m_places[book].resting;
            resting[at] = resting.back();
            m_where[static_cast<std::size_t>(resting[at].order.value())].second = at;
            resting.pop_back();
        } else if (std::holds_alternative<Deal>(event)) {
            ++m_kinds.deals;
        }
    }
}
