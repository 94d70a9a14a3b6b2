#include "matching.h"

#include "orderstream.h"
#include "twinmarket.h"

#include "exchange/core/eventcodec.h"
#include "support/report.h"
#include "support/stopwatch.h"

#include <algorithm>

using namespace zvx;

namespace {

constexpr std::size_t kBooks = 500;
constexpr std::size_t kAccounts = 2000;

TimeMs timeOf(std::size_t command)
{
    return TimeMs(1'577'840'400'000 + static_cast<std::int64_t>(command));
}

bool isSame(const Result &a, const Result &b)
{
    return a.status == b.status && a.first == b.first && a.order == b.order
        && a.revoked == b.revoked;
}

// Events as bytes. What a key's content is told by is each market's own business.
std::string bytesOf(const std::vector<Event> &events)
{
    std::string bytes;
    for (Event event : events) {
        if (auto *answered = std::get_if<ActionAnswered>(&event))
            answered->fingerprint = 0;
        encode(event, bytes);
    }
    return bytes;
}

// Everything that a market can be asked afterwards.
class Comparison
{
public:
    Comparison(const Market &core, const TwinMarket &twin) : m_core(core), m_twin(twin) { }

    bool isEqual(const Floor &floor) const
    {
        if (m_core.feesEarned() != m_twin.feesEarned()
            || m_core.openOrders() != m_twin.openOrders())
            return false;
        for (std::size_t id = 1; id <= floor.accounts(); ++id) {
            if (!isEqual(AccountId(static_cast<std::int64_t>(id))))
                return false;
        }
        return std::all_of(floor.books().begin(), floor.books().end(),
                           [this](const Floor::Book &book) { return isEqual(book.id); });
    }

private:
    bool isEqual(AccountId id) const
    {
        const auto a = m_core.account(id);
        const auto b = m_twin.account(id);
        if (!a || !b || a->available != b->available || a->frozenCash != b->frozenCash
            || a->openOrders != b->openOrders || a->frozen != b->frozen)
            return false;
        std::vector<HoldingView> held;
        m_core.holdingsOf(id, held);
        const std::vector<HoldingView> other = m_twin.holdingsOf(id);
        return std::equal(held.begin(), held.end(), other.begin(), other.end(),
                          [](const HoldingView &x, const HoldingView &y) {
                              return x.collection == y.collection && x.quantity == y.quantity
                                  && x.frozen == y.frozen && x.cost == y.cost;
                          });
    }

    bool isEqual(CollectionId id) const
    {
        const DayFigures a = m_core.collection(id)->day;
        const DayFigures b = m_twin.collection(id)->day;
        if (a.previousClose != b.previousClose || a.lower != b.lower || a.upper != b.upper
            || a.open != b.open || a.high != b.high || a.low != b.low || a.last != b.last
            || a.volume != b.volume || a.amount != b.amount || a.outer != b.outer
            || a.inner != b.inner || a.deals != b.deals)
            return false;
        std::vector<Level> levels;
        for (const Side side : {Side::Buy, Side::Sell}) {
            m_core.levels(id, side, SIZE_MAX, levels);
            const std::vector<Level> other = m_twin.levels(id, side);
            if (!std::equal(levels.begin(), levels.end(), other.begin(), other.end(),
                            [](const Level &x, const Level &y) {
                                return x.price == y.price && x.quantity == y.quantity
                                    && x.orders == y.orders;
                            }))
                return false;
        }
        return true;
    }

    const Market &m_core;
    const TwinMarket &m_twin;
};

class Matching
{
public:
    explicit Matching(const Options &options)
        : m_floor(kBooks, kAccounts, options.seed), m_opening(m_floor.listing())
    {
        const std::vector<Command> accounts = m_floor.opening();
        m_opening.insert(m_opening.end(), accounts.begin(), accounts.end());
        OrderStream stream(m_floor, options.seed);
        m_stream = stream.make(options.commands);
        m_kinds = stream.kinds();
    }

    const OrderStream::Kinds &kinds() const { return m_kinds; }

    // The same answers and events to every command, the same balances and books at the end.
    void checkEquality(Failures &failures) const
    {
        Market core;
        TwinMarket twin;
        std::vector<Event> ours;
        std::vector<Event> theirs;
        std::size_t number = 0;
        for (const auto *commands : {&m_opening, &m_stream}) {
            for (const Command &command : *commands) {
                ours.clear();
                theirs.clear();
                const Result a = core.apply(command, timeOf(number), ours);
                const Result b = twin.apply(command, timeOf(number), theirs);
                if (!isSame(a, b) || bytesOf(ours) != bytesOf(theirs)) {
                    failures.push_back("command " + std::to_string(number) + ": the core answers "
                                       + name(a.status) + " with " + std::to_string(ours.size())
                                       + " events, the twin " + name(b.status) + " with "
                                       + std::to_string(theirs.size()));
                    return;
                }
                ++number;
            }
        }
        if (!Comparison(core, twin).isEqual(m_floor))
            failures.push_back("balances or books differ after the stream");
        if (const auto violation = core.audit())
            failures.push_back("the core does not add up: " + *violation);
    }

    // The same wishes without keys, for which nobody remembers answers.
    void dropKeys()
    {
        for (Command &command : m_stream) {
            if (auto *order = std::get_if<PlaceOrder>(&command))
                order->key = ActionKey();
            else if (auto *revoke = std::get_if<RevokeOrders>(&command))
                revoke->key = ActionKey();
            else if (auto *deposit = std::get_if<Deposit>(&command))
                deposit->key = ActionKey();
            else if (auto *withdraw = std::get_if<Withdraw>(&command))
                withdraw->key = ActionKey();
        }
    }

    Pairs compare(int rounds) const
    {
        Pairs times;
        for (int round = 0; round < rounds; ++round) {
            if (round % 2 == 0) {
                const double ours = measure<Market>();
                times.add(ours, measure<TwinMarket>());
            } else {
                const double twin = measure<TwinMarket>();
                times.add(measure<Market>(), twin);
            }
        }
        return times;
    }

private:
    // Nanoseconds of CPU time a command.
    template <class Kind>
    double measure() const
    {
        Kind market;
        std::vector<Event> happened;
        for (const Command &command : m_opening) {
            happened.clear();
            market.apply(command, timeOf(0), happened);
        }
        std::size_t number = 0;
        const Stopwatch watch;
        for (const Command &command : m_stream) {
            happened.clear();
            market.apply(command, timeOf(++number), happened);
        }
        return watch.cpu() * 1e6 / static_cast<double>(m_stream.size());
    }

    Floor m_floor;
    std::vector<Command> m_opening;
    std::vector<Command> m_stream;
    OrderStream::Kinds m_kinds;
};

} // namespace

void measureMatching(const Options &options, Report &report, Failures &failures)
{
    Matching matching(options);
    matching.checkEquality(failures);
    const Pairs times = matching.compare(options.rounds);
    report.line("a command with full rules on 500 books", times, "ns", Goal::most(0.5, "1/2"));
    const OrderStream::Kinds &kinds = matching.kinds();
    report.note("| … " + std::to_string(kinds.orders) + " orders, " + std::to_string(kinds.revokes)
                + " revocations, " + std::to_string(kinds.money) + " movements of money, "
                + std::to_string(kinds.others) + " odd ones; " + std::to_string(kinds.deals)
                + " deals, " + std::to_string(kinds.refusals) + " refusals | | | | | |");
    matching.dropKeys();
    matching.checkEquality(failures);
    report.line("… the same stream without keys", matching.compare(options.rounds), "ns");
}
