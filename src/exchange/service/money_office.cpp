#include "exchange/service/money_office.h"

#include "exchange/accounts/account_rules.h"
#include "exchange/accounts/digest.h"
#include "exchange/accounts/random_source.h"
#include "exchange/service/money_refusal.h"
#include "exchange/store/store.h"

#include <algorithm>

namespace zvx {

namespace {

constexpr std::int64_t kDayMs = 86'400'000;
constexpr std::int64_t kZoneMs = 8 * 3'600'000;

/// The begin of the day that a time belongs to where the exchange stands.
TimeMs dayBegin(TimeMs now)
{
    return TimeMs(std::max<std::int64_t>(0, exchangeDay(now) * kDayMs - kZoneMs));
}

/// Tells a card from others, in what a transfer has room for.
std::uint64_t printOf(const BankCard &card)
{
    Digest digest(16);
    digest << card.fingerprint;
    std::uint64_t print = 0;
    for (const char byte : digest.finish().substr(0, 8))
        print = print << 8 | static_cast<unsigned char>(byte);
    return print;
}

} // namespace

MoneyOffice::MoneyOffice(Tools tools, const MoneyLimits &limits, MoneyCounters &counters)
    : m_bank(tools.bank), m_clock(tools.clock), m_random(tools.random),
      m_comeBack(std::move(tools.comeBack)), m_limits(limits), m_counters(counters)
{
}

void MoneyOffice::open(TransferMarket &market)
{
    for (const FlowRow &flow : market.waiting()) {
        UnderWay own{&market, flow.transfer, {flow.bank, flow.incoming, flow.amount, {}}};
        // With another card than the one that it began with, a transfer that the bank never heard
        // of must not be carried out.
        own.order.card = market.cardOf(flow.account);
        if (own.order.card && printOf(*own.order.card) != flow.card)
            own.order.card.reset();
        const BankOrder order = own.order;
        m_underWay[flow.bank] = std::move(own);
        ++m_counters.askedAgain;
        ask(order);
    }
}

void MoneyOffice::begin(const MoneyRequest &request, Done done)
{
    try {
        tryBegin(request, done);
    } catch (const StoreError &) {
        tell(done, notTried(MoneyDesk::Status::Failed));
    }
}

void MoneyOffice::tryBegin(const MoneyRequest &request, Done &done)
{
    TransferMarket &market = *request.market;
    // The market forgets a key after two sessions. What has moved money once is known for ever.
    if (const auto flow = market.flowOf(request.account, request.key)) {
        if (flow->incoming == request.incoming && flow->amount == request.amount)
            tellOf(*flow, done);
        else
            refuse(Status::KeyDiffers, request.incoming, done);
        return;
    }
    BeginTransfer command;
    command.account = request.account;
    command.incoming = request.incoming;
    command.amount = request.amount;
    command.bank = newId();
    command.card = request.card ? printOf(*request.card) : 0;
    command.key = request.key;
    command.ruling = rulingOn(request);
    const Result result = market.carryOut(command);
    if (result.status != Status::Accepted) {
        refuse(result.meaning() == Status::Accepted ? Status::KeyDiffers : result.meaning(),
               request.incoming, done);
        return;
    }
    // From here on the transfer is durable, and lives until the bank's word is.
    UnderWay own{
        &market, result.transfer, {command.bank, request.incoming, request.amount, request.card}};
    const BankOrder order = own.order;
    await(own, done);
    m_underWay[command.bank] = std::move(own);
    ask(order);
}

Status MoneyOffice::rulingOn(const MoneyRequest &request)
{
    if (!request.card)
        return Status::NoBankCard;
    if (request.amount > m_limits.ofTransfer)
        return Status::AboveTransferLimit;
    const FlowSum sum = request.market->sum(request.account, request.incoming,
                                            dayBegin(m_clock.wall()), m_limits.transfersOfDay);
    const Wide total = Wide(sum.amount.value()) + request.amount.value();
    if (total > m_limits.ofDay.value() || sum.count >= m_limits.transfersOfDay)
        return Status::AboveDayLimit;
    return Status::Accepted;
}

TransferId MoneyOffice::newId()
{
    TransferId id;
    while (id.isNull()) {
        m_random.fill(&id.high, sizeof id.high);
        m_random.fill(&id.low, sizeof id.low);
    }
    return id;
}

void MoneyOffice::resolve(const MoneyRequest &request, Done done)
{
    try {
        tryResolve(request, done);
    } catch (const StoreError &) {
        tell(done, notTried(MoneyDesk::Status::Failed));
    }
}

void MoneyOffice::tryResolve(const MoneyRequest &request, Done &done)
{
    TransferMarket &market = *request.market;
    if (const auto flow = market.flowOf(request.account, request.key)) {
        if (flow->incoming == request.incoming)
            tellOf(*flow, done);
        else
            refuse(Status::KeyDiffers, request.incoming, done);
        return;
    }
    const Status status = market.carryOut(BurnKey{request.account, request.key}).meaning();
    // Where a key could not be burnt, what it stands for is as open as before.
    if (status == Status::TooManyActions || status == Status::AccountUnknown)
        tell(done, notTried(MoneyDesk::Status::Busy));
    else
        refuse(status == Status::Accepted ? Status::KeyDiffers : status, request.incoming, done);
}

void MoneyOffice::ask(const BankOrder &order)
{
    ++m_counters.asked;
    m_askAgain.emplace(m_clock.steady() + m_limits.askAgainEvery, order.id);
    m_bank.ask(order,
               [comeBack = m_comeBack, id = order.id](BankWord word) { comeBack(id, word); });
}

void MoneyOffice::hear(TransferId id, BankWord word)
{
    const auto found = m_underWay.find(id);
    if (found == m_underWay.end()) {
        ++m_counters.idleAnswers;
        return;
    }
    UnderWay own = std::move(found->second);
    m_underWay.erase(found);
    Outcome outcome;
    try {
        bool isDone = word == BankWord::Done;
        const Result result = own.market->carryOut(EndTransfer{own.transfer, isDone});
        if (result.status == Status::Accepted) {
            ++(!isDone                  ? m_counters.refusedByBank
                   : own.order.incoming ? m_counters.moneyIn
                                        : m_counters.moneyOut);
        } else {
            const auto flow = own.market->flowOf(own.transfer);
            isDone = flow && flow->state == FlowState::Done;
        }
        outcome = decided(own.order.incoming, isDone);
    } catch (const StoreError &) {
        // The market has ended. Its next run asks the bank again.
        outcome = notTried(MoneyDesk::Status::Failed);
    }
    for (Waiter &waiter : own.waiters)
        tell(waiter.done, outcome);
}

void MoneyOffice::tick()
{
    const SteadyMs now = m_clock.steady();
    const auto takeDue = [now](Times &times) {
        std::vector<TransferId> ids;
        const auto end = times.upper_bound(now);
        for (auto at = times.begin(); at != end; ++at)
            ids.push_back(at->second);
        times.erase(times.begin(), end);
        return ids;
    };
    for (const TransferId id : takeDue(m_patience)) {
        const auto found = m_underWay.find(id);
        if (found == m_underWay.end())
            continue;
        std::vector<Waiter> &waiters = found->second.waiters;
        for (Waiter &waiter : waiters) {
            if (waiter.until <= now)
                tell(waiter.done, undecided(found->second.order.incoming));
        }
        waiters.erase(std::remove_if(waiters.begin(), waiters.end(),
                                     [now](const Waiter &each) { return each.until <= now; }),
                      waiters.end());
    }
    for (const TransferId id : takeDue(m_askAgain)) {
        const auto found = m_underWay.find(id);
        if (found == m_underWay.end())
            continue;
        ++m_counters.askedAgain;
        ask(BankOrder(found->second.order));
    }
}

std::optional<SteadyMs> MoneyOffice::due() const
{
    std::optional<SteadyMs> first;
    for (const Times *times : {&m_askAgain, &m_patience}) {
        if (!times->empty() && (!first || times->begin()->first < *first))
            first = times->begin()->first;
    }
    return first;
}

void MoneyOffice::end()
{
    for (auto &[id, transfer] : m_underWay) {
        for (Waiter &waiter : transfer.waiters)
            tell(waiter.done, undecided(transfer.order.incoming));
        transfer.waiters.clear();
    }
}

void MoneyOffice::tellOf(const FlowRow &flow, Done &done)
{
    const auto found = m_underWay.find(flow.bank);
    if (flow.state != FlowState::Pending)
        tell(done, decided(flow.incoming, flow.state == FlowState::Done));
    else if (found != m_underWay.end())
        await(found->second, done);
    else
        tell(done, undecided(flow.incoming));
}

void MoneyOffice::await(UnderWay &transfer, Done &done)
{
    const SteadyMs until = m_clock.steady() + m_limits.answerWait;
    transfer.waiters.push_back({std::exchange(done, {}), until});
    m_patience.emplace(until, transfer.order.id);
}

void MoneyOffice::refuse(Status status, bool incoming, Done &done)
{
    ++m_counters.refused;
    tell(done,
         {MoneyDesk::Status::Refused, moneyReason(status),
          moneySentence(status, incoming, m_limits)});
}

void MoneyOffice::tell(Done &done, Outcome outcome)
{
    if (done)
        std::exchange(done, {})(outcome);
}

MoneyOffice::Outcome MoneyOffice::decided(bool incoming, bool isDone)
{
    if (isDone)
        return {MoneyDesk::Status::Accepted, {}, {}};
    return {MoneyDesk::Status::Refused, "bank",
            incoming ? "银行未能完成转账，您的资金没有变动。"
                     : "银行未能完成转账，资金已退回您的账户。"};
}

MoneyOffice::Outcome MoneyOffice::undecided(bool incoming)
{
    return {MoneyDesk::Status::Pending, "pending",
            incoming ? "银行尚未答复，银行确认后自动入账，请稍后查看资金流水。"
                     : "银行尚未答复，出金款项已冻结，请稍后查看资金流水。"};
}

} // namespace zvx
