#pragma once

#include "exchange/core/command.h"
#include "exchange/service/bank_gateway.h"
#include "exchange/service/money_desk.h"
#include "exchange/store/clock.h"
#include "exchange/store/flows.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace zvx {

class RandomSource;

/// One market as transfers need it. Everything throws StoreError where the market ended.
class TransferMarket
{
public:
    virtual ~TransferMarket() = default;

    /// Durable when it returns. An account that was never in the market is opened there.
    virtual Result carryOut(const BeginTransfer &command) = 0;
    virtual Result carryOut(const EndTransfer &command) = 0;
    virtual Result carryOut(const BurnKey &command) = 0;

    // What is durable now.
    virtual std::vector<FlowRow> waiting() = 0; ///< for the bank
    virtual std::optional<FlowRow> flowOf(AccountId account, ActionKey key) = 0;
    virtual std::optional<FlowRow> flowOf(TransferNumber transfer) = 0;
    virtual FlowSum sum(AccountId account, bool incoming, TimeMs since, std::size_t most) = 0;

    /// The card that an account has now.
    virtual std::optional<BankCard> cardOf(AccountId account) = 0;
};

/// A transfer that somebody asks for.
struct MoneyRequest {
    TransferMarket *market = nullptr;
    AccountId account;
    bool incoming = true;
    Fen amount;
    ActionKey key;
    std::optional<BankCard> card;
};

/**
 * What the money desk's thread does: the rules of transfers, and what waits for the bank.
 *
 * Single-threaded, without a clock of its own; the bank's words come in by hear().
 */
class MoneyOffice
{
public:
    using Done = MoneyDesk::Done;

    struct Tools {
        BankGateway &bank;
        Clock &clock;
        RandomSource &random;
        /// Takes the bank's word along until it can be heard. Any thread, also when the office is
        /// gone.
        std::function<void(TransferId, BankWord)> comeBack;
    };

    MoneyOffice(Tools tools, const MoneyLimits &limits, MoneyCounters &counters);

    /// Asks the bank for everything that waits in a market. Throws StoreError.
    void open(TransferMarket &market);

    /// Each tells `done` exactly once, now or later.
    void begin(const MoneyRequest &request, Done done);
    /// What became of the request's key; amount and card do not matter.
    void resolve(const MoneyRequest &request, Done done);

    void hear(TransferId id, BankWord word);

    /// Tells those who have waited long enough, and asks a silent bank again.
    void tick();
    /// When there is something to do by tick().
    std::optional<SteadyMs> due() const;

    /// Tells all who wait that the bank has not answered.
    void end();

    std::size_t underWay() const { return m_underWay.size(); }

private:
    using Outcome = MoneyDesk::Outcome;
    struct Waiter {
        Done done;
        SteadyMs until = 0;
    };
    struct UnderWay {
        TransferMarket *market = nullptr;
        TransferNumber transfer;
        BankOrder order;
        std::vector<Waiter> waiters = {};
    };
    struct IdOrder {
        bool operator()(const TransferId &a, const TransferId &b) const
        {
            return std::make_pair(a.high, a.low) < std::make_pair(b.high, b.low);
        }
    };
    using Times = std::multimap<SteadyMs, TransferId>;

    void tryBegin(const MoneyRequest &request, Done &done);
    void tryResolve(const MoneyRequest &request, Done &done);
    Status rulingOn(const MoneyRequest &request);
    TransferId newId();
    void ask(const BankOrder &order);
    /// Tells what became of a transfer, or lets `done` wait for it.
    void tellOf(const FlowRow &flow, Done &done);
    void await(UnderWay &transfer, Done &done);
    void refuse(Status status, bool incoming, Done &done);
    void tell(Done &done, Outcome outcome);
    static Outcome decided(bool incoming, bool isDone);
    static Outcome undecided(bool incoming);

    BankGateway &m_bank;
    Clock &m_clock;
    RandomSource &m_random;
    std::function<void(TransferId, BankWord)> m_comeBack;
    const MoneyLimits m_limits;
    MoneyCounters &m_counters;

    std::map<TransferId, UnderWay, IdOrder> m_underWay;
    // Of transfers that may have ended meanwhile.
    Times m_askAgain;
    Times m_patience;
};

} // namespace zvx
