#include "exchange/core/bytes.h"
#include "exchange/core/faults.h"
#include "exchange/core/state.h"

#include <algorithm>
#include <tuple>

// The state as bytes and as a hash. Both walk the same lists of fields, named once below.

namespace zvx {

using core::kNone;
using core::mix;
using core::Order;

namespace {

constexpr std::string_view kMagic = "zvck";
/** Version 1 ended before the transfers, version 2 before the deliveries. */
constexpr std::uint8_t kCheckpointVersion = 3;

template <class V>
void walk(core::Account &account, V &v)
{
    v(account.id), v(account.fee), v(account.available), v(account.frozenCash), v(account.frozen);
}

template <class V>
void walk(CollectionView &facts, V &v)
{
    v(facts.collection), v(facts.issued), v(facts.circulating), v(facts.limit), v(facts.tick),
        v(facts.lot), v(facts.suspended);
    DayFigures &day = facts.day;
    v(day.previousClose), v(day.lower), v(day.upper), v(day.open), v(day.high), v(day.low),
        v(day.last), v(day.volume), v(day.amount), v(day.outer), v(day.inner), v(day.deals);
}

template <class V>
void walk(core::Holding &holding, V &v)
{
    v(holding.account), v(holding.book), v(holding.quantity), v(holding.frozen), v(holding.cost);
}

template <class V>
void walk(Order &order, V &v)
{
    v(order.number), v(order.account), v(order.book), v(order.side), v(order.fee), v(order.price),
        v(order.quantity), v(order.remaining), v(order.amount), v(order.charged),
        v(order.frozenCash), v(order.feeCap), v(order.at);
}

template <class V>
void walk(core::ActionLog::Entry &entry, V &v)
{
    v(entry.account), v(entry.key.high), v(entry.key.low), v(entry.fingerprint), v(entry.session),
        v(entry.status), v(entry.order), v(entry.revoked);
}

/** A rate of an account and a collection. */
struct Rate {
    std::uint32_t account = 0;
    std::uint32_t collection = 0;
    PartsPerMillion rate;
};

template <class V>
void walk(Rate &rate, V &v)
{
    v(rate.account), v(rate.collection), v(rate.rate);
}

/** What belongs to the market as a whole. */
struct Totals {
    TradingDay day;
    Sequence session;
    bool open = false;
    OrderNumber lastOrder;
    Sequence lastDeal;
    Fen fees;
    Fen outside;
};

template <class V>
void walk(Totals &totals, V &v)
{
    v(totals.day), v(totals.session), v(totals.open), v(totals.lastOrder), v(totals.lastDeal),
        v(totals.fees), v(totals.outside);
}

/** Stands apart from the totals and is left out before the first transfer, so that a market without
 * one has the hash that it had when there were none. */
struct TransferTotals {
    TransferNumber last;
};

template <class V>
void walk(TransferTotals &totals, V &v)
{
    v(totals.last);
}

template <class V>
void walk(core::Transfer &transfer, V &v)
{
    v(transfer.number), v(transfer.account), v(transfer.incoming), v(transfer.amount),
        v(transfer.bank.high), v(transfer.bank.low), v(transfer.card), v(transfer.key.high),
        v(transfer.key.low), v(transfer.at);
}

/** Left out before the first delivery, likewise. */
struct DeliveryTotals {
    DeliveryNumber last;
};

template <class V>
void walk(DeliveryTotals &totals, V &v)
{
    v(totals.last);
}

/** Pieces of a collection that were sent, where there are some. */
struct SentPieces {
    std::uint32_t book = 0;
    Quantity quantity;
};

template <class V>
void walk(SentPieces &sent, V &v)
{
    v(sent.book), v(sent.quantity);
}

template <class V>
void walk(core::Delivery &delivery, V &v)
{
    v(delivery.number), v(delivery.account), v(delivery.book), v(delivery.quantity),
        v(delivery.stage), v(delivery.parcel.high), v(delivery.parcel.low), v(delivery.key.high),
        v(delivery.key.low), v(delivery.at);
}

class Saver
{
public:
    explicit Saver(std::string &out) : m_writer(out) { }

    template <class Tag>
    void operator()(Number<Tag> value)
    {
        m_writer.put(value);
    }
    void operator()(bool value) { m_writer.byte(value); }
    void operator()(Side value) { m_writer.byte(static_cast<std::uint8_t>(value)); }
    void operator()(Status value) { m_writer.byte(static_cast<std::uint8_t>(value)); }
    void operator()(DeliveryStage value) { m_writer.byte(static_cast<std::uint8_t>(value)); }
    void operator()(std::uint32_t value) { m_writer.number(value); }
    void operator()(std::uint64_t value) { m_writer.fixed(value); }
    void operator()(std::int64_t value) { m_writer.folded(value); }

    void count(std::size_t value) { m_writer.number(value); }

private:
    core::Writer m_writer;
};

class Loader
{
public:
    explicit Loader(std::string_view bytes) : m_reader(bytes) { }

    template <class Tag>
    void operator()(Number<Tag> &value)
    {
        check(m_reader.get(value));
    }
    void operator()(bool &value) { value = small(1) == 1; }
    void operator()(Side &value) { value = static_cast<Side>(small(1)); }
    void operator()(Status &value)
    {
        value = static_cast<Status>(small(static_cast<std::uint8_t>(kLastStatus)));
    }
    void operator()(DeliveryStage &value)
    {
        value = static_cast<DeliveryStage>(small(static_cast<std::uint8_t>(kLastStage)));
    }
    void operator()(std::uint32_t &value)
    {
        std::uint64_t raw = 0;
        check(m_reader.number(raw) && raw < kNone);
        value = static_cast<std::uint32_t>(raw);
    }
    void operator()(std::uint64_t &value) { check(m_reader.fixed(value)); }
    void operator()(std::int64_t &value) { check(m_reader.folded(value)); }

    /** How many entries follow; each of them takes a byte at least. */
    std::size_t count()
    {
        std::uint64_t raw = 0;
        check(m_reader.number(raw) && raw <= m_reader.rest().size());
        return static_cast<std::size_t>(raw);
    }

    void end() { check(m_reader.rest().empty()); }

    static void check(bool holds)
    {
        if (!holds)
            throw Damaged("a checkpoint that no market wrote");
    }

private:
    std::uint8_t small(std::uint8_t most)
    {
        std::uint8_t raw = 0;
        check(m_reader.byte(raw) && raw <= most);
        return raw;
    }

    core::Reader m_reader;
};

class Hasher
{
public:
    explicit Hasher(std::uint64_t kind) : m_hash(mix(kind)) { }

    template <class Tag>
    void operator()(Number<Tag> value)
    {
        (*this)(static_cast<std::uint64_t>(value.value()));
    }
    void operator()(bool value) { (*this)(std::uint64_t(value)); }
    void operator()(Side value) { (*this)(static_cast<std::uint64_t>(value)); }
    void operator()(Status value) { (*this)(static_cast<std::uint64_t>(value)); }
    void operator()(DeliveryStage value) { (*this)(static_cast<std::uint64_t>(value)); }
    void operator()(std::uint32_t value) { (*this)(std::uint64_t(value)); }
    void operator()(std::int64_t value) { (*this)(static_cast<std::uint64_t>(value)); }
    void operator()(std::uint64_t value)
    {
        m_hash = mix(m_hash * 31 + value + 0x9e3779b97f4a7c15u);
    }

    std::uint64_t hash() const { return m_hash; }

private:
    std::uint64_t m_hash;
};

std::uint64_t hashOf(std::string_view bytes)
{
    Hasher hasher(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        std::uint64_t word = 0;
        for (std::size_t j = i; j < std::min(i + 8, bytes.size()); ++j)
            word = word << 8 | static_cast<std::uint8_t>(bytes[j]);
        hasher(word);
    }
    return hasher.hash();
}

} // namespace

template <class Begin, class Visit>
void Market::State::eachPart(Begin &&begin, Visit &&visit) const
{
    begin(1);
    visit(0, Totals{day, session, open, lastOrder, lastDeal, fees, outside});

    begin(accounts.size());
    for (const core::Account &account : accounts)
        visit(1, account);

    std::vector<Rate> sortedRates;
    rates.forEach([&](std::uint64_t key, std::uint32_t rate) {
        sortedRates.push_back({static_cast<std::uint32_t>(key >> 32),
                               static_cast<std::uint32_t>(key), PartsPerMillion(rate)});
    });
    std::sort(sortedRates.begin(), sortedRates.end(), [](const Rate &a, const Rate &b) {
        return std::tie(a.account, a.collection) < std::tie(b.account, b.collection);
    });
    begin(sortedRates.size());
    for (const Rate &rate : sortedRates)
        visit(2, rate);

    begin(books.size());
    for (const core::Book &book : books)
        visit(3, book.facts);

    std::vector<core::Holding> sortedHoldings;
    for (const core::Holding &holding : holdings) {
        if (!holding.isEmpty())
            sortedHoldings.push_back(holding);
    }
    std::sort(sortedHoldings.begin(), sortedHoldings.end(),
              [](const core::Holding &a, const core::Holding &b) {
                  return std::tie(a.account, a.book) < std::tie(b.account, b.book);
              });
    begin(sortedHoldings.size());
    for (const core::Holding &holding : sortedHoldings)
        visit(4, holding);

    begin(orders.size());
    orders.forEach([&](std::uint32_t index) { visit(5, orders[index]); });

    begin(actions.entries().size());
    for (const core::ActionLog::Entry &entry : actions.entries())
        visit(6, entry);

    const bool any = lastTransfer > TransferNumber(0);
    begin(any ? 1 : 0);
    if (any)
        visit(7, TransferTotals{lastTransfer});
    begin(transfers.size());
    for (const auto &[number, transfer] : transfers)
        visit(8, transfer);

    const bool anyDelivery = lastDelivery > DeliveryNumber(0);
    begin(anyDelivery ? 1 : 0);
    if (anyDelivery)
        visit(9, DeliveryTotals{lastDelivery});
    std::vector<SentPieces> sent;
    for (std::uint32_t book = 0; book < books.size(); ++book) {
        if (books[book].facts.sent > Quantity(0))
            sent.push_back({book, books[book].facts.sent});
    }
    begin(sent.size());
    for (const SentPieces &pieces : sent)
        visit(10, pieces);
    begin(deliveries.size());
    for (const auto &[number, delivery] : deliveries)
        visit(11, delivery);
}

std::uint64_t Market::stateHash() const
{
    // A sum of hashes does not ask in which order the parts come.
    std::uint64_t sum = 0;
    m_state->eachPart([](std::size_t) {},
                      [&sum](std::uint64_t kind, auto part) {
                          Hasher hasher(kind);
                          walk(part, hasher);
                          sum += hasher.hash();
                      });
    return sum;
}

std::string Market::checkpoint() const
{
    std::string bytes(kMagic);
    bytes.push_back(static_cast<char>(kCheckpointVersion));
    Saver save(bytes);
    m_state->eachPart([&save](std::size_t count) { save.count(count); },
                      [&save](std::uint64_t, auto part) {
                          if constexpr (std::is_same_v<decltype(part), Order>) {
                              if (fault("checkpoint-forgets-fees-paid"))
                                  part.charged = Fen(0);
                          }
                          if constexpr (std::is_same_v<decltype(part), core::Transfer>) {
                              if (fault("checkpoint-forgets-whose-transfer"))
                                  part.bank.low ^= 1;
                          }
                          walk(part, save);
                      });
    core::Writer(bytes).fixed(hashOf(bytes));
    return bytes;
}

Market Market::restore(std::string_view bytes, const Limits &limits)
{
    try {
        return load(bytes, limits);
    } catch (const OutOfBounds &) {
        throw Damaged("a checkpoint with an amount out of bounds");
    }
}

Market Market::load(std::string_view bytes, const Limits &limits)
{
    const auto check = [](bool holds) { Loader::check(holds); };
    check(bytes.size() > kMagic.size() + 9 && bytes.substr(0, kMagic.size()) == kMagic);
    const auto version = static_cast<std::uint8_t>(bytes[kMagic.size()]);
    check(version >= 1 && version <= kCheckpointVersion);
    std::uint64_t hash = 0;
    core::Reader tail(bytes.substr(bytes.size() - 8));
    bytes.remove_suffix(8);
    check(tail.fixed(hash) && hash == hashOf(bytes));

    Loader read(bytes.substr(kMagic.size() + 1));
    Totals totals;
    check(read.count() == 1);
    walk(totals, read);
    Market market(totals.day, limits);
    State &state = *market.m_state;
    state.session = totals.session;
    state.open = totals.open;
    state.lastOrder = totals.lastOrder;
    state.lastDeal = totals.lastDeal;
    state.fees = totals.fees;
    state.outside = totals.outside;

    for (std::size_t i = read.count(); i > 0; --i) {
        core::Account account;
        walk(account, read);
        check(account.id > AccountId(0) && state.findAccount(account.id) == kNone);
        state.accountIndex.set(static_cast<std::uint64_t>(account.id.value()),
                               static_cast<std::uint32_t>(state.accounts.size()));
        state.accounts.push_back(account);
        state.touchAccount(static_cast<std::uint32_t>(state.accounts.size() - 1));
    }
    for (std::size_t i = read.count(); i > 0; --i) {
        Rate rate;
        walk(rate, read);
        check(rate.account < state.accounts.size() && rate.collection > 0
              && rate.rate <= kHighestFee);
        state.accounts[rate.account].hasRates = true;
        state.rates.set(core::pairKey(rate.account, rate.collection),
                        static_cast<std::uint32_t>(rate.rate.value()));
    }
    for (std::size_t i = read.count(); i > 0; --i) {
        core::Book book;
        walk(book.facts, read);
        check(book.facts.collection > CollectionId(0)
              && state.findBook(book.facts.collection) == kNone);
        state.bookIndex.set(static_cast<std::uint64_t>(book.facts.collection.value()),
                            static_cast<std::uint32_t>(state.books.size()));
        state.books.push_back(std::move(book));
        state.touchBook(static_cast<std::uint32_t>(state.books.size() - 1));
    }
    for (std::size_t i = read.count(); i > 0; --i) {
        core::Holding holding;
        walk(holding, read);
        check(holding.account < state.accounts.size() && holding.book < state.books.size()
              && state.findHolding(holding.account, holding.book) == kNone);
        core::Holding &place = state.holdings[state.ensureHolding(holding.account, holding.book)];
        place.quantity = holding.quantity;
        place.frozen = holding.frozen;
        place.cost = holding.cost;
    }
    std::uint32_t lastNumber = 0;
    for (std::size_t i = read.count(); i > 0; --i) {
        Order order;
        walk(order, read);
        check(order.number > lastNumber && order.number <= totals.lastOrder.value());
        check(order.account < state.accounts.size() && order.book < state.books.size());
        check(order.price >= Fen(1) && order.price < Fen(kPriceBound)
              && order.remaining > Quantity(0));
        lastNumber = order.number;
        const std::uint32_t index = state.orders.add(order.number);
        order.holding = state.ensureHolding(order.account, order.book);
        state.orders[index] = order;
        state.hang(index);
    }
    for (std::size_t i = read.count(); i > 0; --i) {
        core::ActionLog::Entry entry;
        walk(entry, read);
        check(entry.account < state.accounts.size() && !entry.key.isNull()
              && entry.session <= state.session && entry.revoked >= 0
              && state.actions.find(entry.account, entry.key) == nullptr);
        state.actions.add(entry);
        ++state.accounts[entry.account].keys;
    }
    if (version >= 2) {
        const std::size_t totalsOfTransfers = read.count();
        check(totalsOfTransfers <= 1);
        if (totalsOfTransfers == 1) {
            TransferTotals last;
            walk(last, read);
            check(last.last > TransferNumber(0));
            state.lastTransfer = last.last;
        }
        TransferNumber before;
        for (std::size_t i = read.count(); i > 0; --i) {
            core::Transfer transfer;
            walk(transfer, read);
            check(transfer.number > before && transfer.number <= state.lastTransfer
                  && transfer.account < state.accounts.size() && transfer.amount > Fen(0)
                  && !transfer.bank.isNull());
            before = transfer.number;
            state.hang(transfer);
        }
    }
    if (version >= 3) {
        const std::size_t totalsOfDeliveries = read.count();
        check(totalsOfDeliveries <= 1);
        if (totalsOfDeliveries == 1) {
            DeliveryTotals last;
            walk(last, read);
            check(last.last > DeliveryNumber(0));
            state.lastDelivery = last.last;
        }
        for (std::size_t i = read.count(); i > 0; --i) {
            SentPieces pieces;
            walk(pieces, read);
            check(pieces.book < state.books.size() && pieces.quantity > Quantity(0)
                  && state.books[pieces.book].facts.sent == Quantity(0));
            state.books[pieces.book].facts.sent = pieces.quantity;
        }
        DeliveryNumber before;
        for (std::size_t i = read.count(); i > 0; --i) {
            core::Delivery delivery;
            walk(delivery, read);
            check(delivery.number > before && delivery.number <= state.lastDelivery
                  && delivery.account < state.accounts.size() && delivery.book < state.books.size()
                  && !delivery.parcel.isNull());
            before = delivery.number;
            state.hang(delivery);
        }
    }
    read.end();
    if (const auto violation = market.audit())
        throw Damaged("a checkpoint that does not add up: " + *violation);
    return market;
}

} // namespace zvx
