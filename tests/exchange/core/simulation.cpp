#include "exchange/core/simulation.h"

#include "exchange/core/eventcodec.h"
#include "exchange/core/market.h"
#include "exchange/core/slow_market.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

using namespace zvx;

namespace {

constexpr int kSteps = 200;
constexpr std::int64_t kAccounts = 5;
constexpr std::int64_t kCollections = 2;
constexpr std::int64_t kDay = 20'200'101;

class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

void require(bool holds, const std::string &what)
{
    if (!holds)
        throw Failure(what);
}

/** The same numbers on every machine, unlike the distributions of the standard library. */
class Random
{
public:
    /** The seed is mixed: unmixed, neighbours would give the same numbers, a step apart. */
    explicit Random(std::uint64_t seed) : m_state(mixed(mixed(seed) + 0x2545f4914f6cdd1du)) { }

    std::uint64_t next() { return mixed(m_state += 0x9e3779b97f4a7c15u); }
    /** 0 .. count - 1 */
    std::int64_t below(std::int64_t count)
    {
        return static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(count));
    }
    std::int64_t between(std::int64_t least, std::int64_t most)
    {
        return least + below(most - least + 1);
    }
    bool chance(int percent) { return below(100) < percent; }

private:
    static std::uint64_t mixed(std::uint64_t x)
    {
        x = (x ^ x >> 30) * 0xbf58476d1ce4e5b9u;
        x = (x ^ x >> 27) * 0x94d049bb133111ebu;
        return x ^ x >> 31;
    }

    std::uint64_t m_state;
};

/** One thing that a client means to do, once. */
struct Intent {
    Command command;
    AccountId account;
    ActionKey key;
    std::int64_t session = 0;
    /** Its answer may change: a refusal frees the key, or the key stands for two things. */
    bool ambiguous = false;
    bool placing = false;
    bool resolved = false; ///< the client has an answer
    Status answer = Status::Accepted;
    OrderNumber order;
};

struct Message {
    std::size_t intent = 0;
    bool stale = false; ///< a copy of something answered long ago
    bool asking = false; ///< the client gave up waiting and asks what became of it
};

/** An answer that waits for the commit of its batch. */
struct Waiting {
    std::size_t intent = 0;
    Result result;
};

/** What survives a crash: whole batches, and now and then a checkpoint. */
struct Disk {
    std::string checkpoint;
    std::vector<std::string> batches; ///< encoded events since the checkpoint
    std::vector<std::string> all; ///< encoded events since the beginning
    std::vector<Command> commands; ///< what the slow market needs to come back
    std::uint64_t hash = 0;
    std::int64_t session = 1; ///< what clients can know of; a later one may still be lost
};

std::string pictureOf(const Market &market)
{
    const auto text = [](auto... parts) {
        std::string line;
        ((line += std::to_string(parts), line += ' '), ...);
        return line;
    };
    std::string all = "day "
        + text(market.day().value(), market.session().value(), int(market.isOpen()),
               market.lastDeal().value())
        + '\n';
    all += "fees " + text(market.feesEarned().value()) + '\n';
    std::vector<AccountId> accounts = market.accounts();
    std::sort(accounts.begin(), accounts.end());
    for (const AccountId id : accounts) {
        const AccountView account = *market.account(id);
        all += "account "
            + text(id.value(), int(account.frozen), account.fee.value(), account.available.value(),
                   account.frozenCash.value(), account.openOrders)
            + '\n';
        std::vector<HoldingView> holdings;
        market.holdingsOf(id, holdings);
        for (const HoldingView &holding : holdings)
            all += "holding "
                + text(holding.collection.value(), holding.quantity.value(), holding.frozen.value(),
                       holding.cost.value())
                + '\n';
        std::vector<OrderView> orders;
        market.ordersOf(id, orders);
        for (const OrderView &order : orders)
            all += "order "
                + text(order.order.value(), order.collection.value(), int(order.side == Side::Sell),
                       order.price.value(), order.quantity.value(), order.remaining.value(),
                       order.amount.value(), order.charged.value(), order.frozenCash.value())
                + '\n';
    }
    std::vector<CollectionId> collections = market.collections();
    std::sort(collections.begin(), collections.end());
    for (const CollectionId id : collections) {
        const CollectionView facts = *market.collection(id);
        const DayFigures &day = facts.day;
        all += "collection "
            + text(id.value(), int(facts.suspended), facts.circulating.value(), facts.sent.value(),
                   day.previousClose.value(), day.lower.value(), day.upper.value(),
                   day.open.value(), day.high.value(), day.low.value(), day.last.value(),
                   day.volume.value(), day.amount.value(), day.outer.value(), day.inner.value(),
                   day.deals)
            + '\n';
        std::vector<Level> levels;
        market.levels(id, Side::Buy, SIZE_MAX, levels);
        for (const Level &level : levels)
            all += "buys " + text(level.price.value(), level.quantity.value(), level.orders) + '\n';
        market.levels(id, Side::Sell, SIZE_MAX, levels);
        for (const Level &level : levels)
            all += "sells " + text(level.price.value(), level.quantity.value(), level.orders)
                + '\n';
    }
    std::vector<TransferView> transfers;
    market.transfers(transfers);
    for (const TransferView &transfer : transfers)
        all += "transfer "
            + text(transfer.transfer.value(), transfer.account.value(), int(transfer.incoming),
                   transfer.amount.value())
            + '\n';
    std::vector<DeliveryView> deliveries;
    market.deliveries(deliveries);
    for (const DeliveryView &delivery : deliveries)
        all += "delivery "
            + text(delivery.delivery.value(), delivery.account.value(), delivery.collection.value(),
                   delivery.quantity.value(), int(delivery.stage))
            + '\n';
    return all;
}

/** The first line that differs. */
std::string difference(const std::string &core, const std::string &slow)
{
    std::size_t begin = 0;
    while (begin < core.size() && begin < slow.size()) {
        const std::string a = core.substr(begin, core.find('\n', begin) - begin);
        const std::string b = slow.substr(begin, slow.find('\n', begin) - begin);
        if (a != b)
            return "core: " + a + "| slow: " + b;
        begin += a.size() + 1;
    }
    return "one of the two has more lines";
}

class World
{
public:
    World(std::uint64_t seed, Counts &counts)
        : m_random(seed), m_counts(counts), m_limits(limitsOf(m_random)),
          m_market(TradingDay(kDay), m_limits), m_slow(newSlow())
    {
    }

    void live()
    {
        open();
        for (int step = 0; step < kSteps; ++step)
            act();
        settleDown();
    }

private:
    static Limits limitsOf(Random &random)
    {
        Limits limits;
        limits.openOrdersOfAccount = static_cast<std::size_t>(random.chance(30) ? 4 : 1000);
        limits.keysOfAccount = static_cast<std::size_t>(random.chance(10) ? 8 : 1000);
        limits.transfersOfAccount = static_cast<std::size_t>(random.chance(40) ? 2 : 20);
        limits.deliveriesOfAccount = static_cast<std::size_t>(random.chance(40) ? 2 : 200);
        limits.keySalt = random.next();
        return limits;
    }

    SlowMarket newSlow() const
    {
        return SlowMarket(kDay,
                          {static_cast<std::int64_t>(m_limits.openOrdersOfAccount),
                           static_cast<std::int64_t>(m_limits.keysOfAccount),
                           static_cast<std::int64_t>(m_limits.transfersOfAccount),
                           static_cast<std::int64_t>(m_limits.deliveriesOfAccount)});
    }

    void open()
    {
        for (std::int64_t id = 1; id <= kCollections; ++id) {
            ListCollection listing;
            listing.collection = CollectionId(id * 11);
            listing.previousClose
                = Fen(id == 1 ? m_random.between(20, 60) : m_random.between(90'000, 110'000) * 2);
            listing.issued = Quantity(5000);
            listing.limit = PartsPerMillion(id == 1 ? 200'000 : 30);
            listing.tick = Fen(id == 1 ? 1 : 2);
            listing.lot = Quantity(id == 1 ? 1 : 5);
            serve(listing);
        }
        for (std::int64_t id = 1; id <= kAccounts; ++id) {
            OpenAccount account;
            account.account = AccountId(id);
            account.fee = PartsPerMillion(m_random.between(0, 1) == 0 ? 3000 : 77'777);
            if (m_random.chance(40))
                account.rates.push_back(
                    {CollectionId(11), PartsPerMillion(m_random.between(0, 100'000))});
            serve(account);
            serve(Deposit{AccountId(id), Fen(m_random.between(1, 6'000'000)), {}});
            for (std::int64_t i = 1; i <= kCollections; ++i)
                serve(GrantHolding{AccountId(id),
                                   CollectionId(i * 11),
                                   Quantity(m_random.between(1, 60)),
                                   Fen(m_random.between(0, 50)),
                                   {}});
        }
        serve(SetPhase{true});
        commit();
        m_disk.checkpoint = m_market.checkpoint();
        m_disk.batches.clear();
    }

    void act()
    {
        // A market that is closed, or clients that are frozen, teach little: not for long.
        if (m_random.chance(10))
            reopen();
        const std::int64_t dice = m_random.below(100);
        if (dice < 40)
            intend();
        else if (dice < 44)
            speakAsBank();
        else if (dice < 47)
            speakAsCarrier();
        else if (dice < 79)
            deliver();
        else if (dice < 88)
            commit();
        else if (dice < 91)
            crash();
        else if (dice < 93)
            checkpoint();
        else if (dice < 95)
            jump();
        else if (dice < 97)
            replayOld();
        else
            operate();
    }

    /** A client wants something and sends it, perhaps twice. */
    void intend()
    {
        Intent intent;
        intent.account = AccountId(m_random.chance(98) ? m_random.between(1, kAccounts) : 99);
        intent.key = {m_random.next(), m_random.next()};
        bool shared = false;
        if (m_random.chance(2) && !m_intents.empty()) {
            Intent &other = m_intents[static_cast<std::size_t>(
                m_random.below(static_cast<std::int64_t>(m_intents.size())))];
            // A key of an earlier session may be forgotten by rule while this one is on its way.
            if (other.account == intent.account && other.session == m_disk.session) {
                ++m_counts["key used for two things"];
                intent.key = other.key;
                shared = other.ambiguous = true;
            }
        }
        intent.session = m_disk.session;
        const std::int64_t dice = m_random.below(100);
        if (dice < 63)
            intent.command = order(intent);
        else if (dice < 74)
            intent.command = revoke(intent);
        else if (dice < 82)
            intent.command = request(intent);
        else if (dice < 86)
            intent.command = cancel(intent);
        else if (dice < 92)
            intent.command = transfer(intent);
        else if (dice < 96)
            intent.command = Deposit{intent.account, money(), intent.key};
        else
            intent.command = Withdraw{intent.account, money(), intent.key};
        intent.ambiguous |= shared;
        m_intents.push_back(intent);
        send(m_intents.size() - 1);
    }

    Fen money()
    {
        return Fen(m_random.chance(10) ? m_random.between(-5, 0) : m_random.between(1, 20'000));
    }

    Command order(Intent &intent)
    {
        intent.placing = true;
        PlaceOrder command;
        command.account = intent.account;
        command.key = intent.key;
        command.refusalFreesKey = intent.ambiguous = m_random.chance(10);
        const bool first = m_random.chance(75);
        command.collection = CollectionId(m_random.chance(1) ? 5 : first ? 11 : 22);
        command.side = m_random.chance(50) ? Side::Buy : Side::Sell;
        const auto facts = m_market.collection(command.collection);
        const Fen lower = facts ? facts->day.lower : Fen(1);
        const Fen upper = facts ? facts->day.upper : Fen(100);
        // Mostly near the middle, sometimes at the limits or one tick beyond.
        const std::int64_t middle = (lower.value() + upper.value()) / 2;
        const std::int64_t tick = facts ? facts->tick.value() : 1;
        std::int64_t price = middle + m_random.between(-2, 2);
        if (m_random.chance(15))
            price = m_random.chance(50) ? lower.value() - m_random.below(2)
                                        : upper.value() + m_random.below(2);
        if (m_random.chance(95))
            price -= price % tick;
        command.price = Fen(price);
        std::int64_t quantity = m_random.between(1, 20);
        if (!first)
            quantity = m_random.chance(95) ? m_random.between(1, 3) * 5 : quantity;
        if (m_random.chance(4))
            quantity = m_random.between(-1, 0);
        if (m_random.chance(first ? 8 : 30) && command.side == Side::Buy && price > 0) {
            // All that the money buys, and sometimes one more.
            const auto holder = m_market.account(intent.account);
            const std::int64_t rate = m_market.feeRate(intent.account, command.collection).value();
            if (holder)
                quantity = holder->available.value() * 1'000'000 / (1'000'000 + rate) / price
                    + m_random.below(2);
            if (!first)
                quantity -= quantity % 5;
        }
        command.quantity = Quantity(quantity);
        if (m_random.chance(4) && command.side == Side::Buy && facts && price > 0)
            bringMoneyFor(command);
        return command;
    }

    /** Leaves the account a few fen short of a large order, about where a float would. */
    void bringMoneyFor(PlaceOrder &order)
    {
        const auto holder = m_market.account(order.account);
        if (!holder)
            return;
        order.quantity = Quantity(m_random.between(50, 400) * 5);
        const Fen amount = order.price * order.quantity;
        const std::int64_t cost = amount.value()
            + share(amount, m_market.feeRate(order.account, order.collection)).value();
        const std::int64_t missing = m_random.below((cost >> 22) + 2);
        const Fen money(cost - missing - holder->available.value());
        if (money > Fen(0))
            serve(Deposit{order.account, money, {}});
    }

    Command transfer(const Intent &intent)
    {
        BeginTransfer command;
        command.account = intent.account;
        command.key = intent.key;
        command.incoming = m_random.chance(50);
        command.amount = money();
        if (m_random.chance(5))
            command.amount = Fen(kAmountBound + 50 - m_random.below(100));
        command.bank = {m_random.chance(98) ? m_random.next() | 1 : 0, 0};
        command.card = m_random.next();
        if (m_random.chance(5))
            command.ruling = m_random.chance(50) ? Status::NoBankCard
                : m_random.chance(50)            ? Status::AboveTransferLimit
                                                 : Status::AboveDayLimit;
        return command;
    }

    /** The bank's word on a transfer: of one that waits, of one that ended, of none. */
    void speakAsBank()
    {
        std::vector<TransferView> waiting;
        m_market.transfers(waiting);
        TransferNumber number(m_random.between(-1, m_market.lastTransfer().value() + 1));
        if (!waiting.empty() && m_random.chance(80)) {
            number = waiting[static_cast<std::size_t>(
                                 m_random.below(static_cast<std::int64_t>(waiting.size())))]
                         .transfer;
        }
        const EndTransfer command{number, m_random.chance(60)};
        serve(command);
        if (m_random.chance(20))
            serve(EndTransfer{number, m_random.chance(50)});
    }

    Command request(const Intent &intent)
    {
        RequestDelivery command;
        command.account = intent.account;
        command.key = intent.key;
        command.collection = CollectionId(m_random.chance(3) ? 5 : m_random.chance(50) ? 11 : 22);
        const HoldingView own = m_market.holding(intent.account, command.collection);
        const std::int64_t free = own.quantity.value() - own.frozen.value();
        command.quantity = Quantity(m_random.chance(20) ? free + m_random.between(-1, 1)
                                                        : m_random.between(0, 6));
        command.parcel = {m_random.chance(98) ? m_random.next() | 1 : 0, 0};
        return command;
    }

    /** One that is under way, mostly one's own, else any number. */
    DeliveryNumber someDelivery(int percentUnderWay)
    {
        std::vector<DeliveryView> underWay;
        m_market.deliveries(underWay);
        if (!underWay.empty() && m_random.chance(percentUnderWay))
            return underWay[static_cast<std::size_t>(
                                m_random.below(static_cast<std::int64_t>(underWay.size())))]
                .delivery;
        return DeliveryNumber(m_random.between(-1, m_market.lastDelivery().value() + 1));
    }

    Command cancel(Intent &intent)
    {
        CancelDelivery command;
        command.delivery = someDelivery(80);
        std::vector<DeliveryView> underWay;
        m_market.deliveries(underWay);
        for (const DeliveryView &delivery : underWay) {
            if (delivery.delivery == command.delivery && m_random.chance(80))
                intent.account = delivery.account;
        }
        command.account = intent.account;
        command.key = intent.key;
        return command;
    }

    /** The carrier's word on a delivery, now and then one that makes no sense any more. */
    void speakAsCarrier()
    {
        const DeliveryStage stages[]
            = {DeliveryStage::Preparing, DeliveryStage::Sent, DeliveryStage::Refused};
        const DeliveryNumber number = someDelivery(85);
        serve(AdvanceDelivery{
            number, m_random.chance(3) ? DeliveryStage::Cancelled : stages[m_random.below(3)]});
        if (m_random.chance(40))
            serve(AdvanceDelivery{number, stages[m_random.below(3)]});
    }

    Command revoke(const Intent &intent)
    {
        RevokeOrders command;
        command.account = intent.account;
        command.key = intent.key;
        const std::int64_t last = m_market.lastOrder().value();
        for (std::int64_t i = m_random.between(m_random.chance(3) ? 0 : 1, 3); i > 0; --i)
            command.orders.push_back(
                OrderNumber(m_random.between(std::max<std::int64_t>(0, last - 12), last + 1)));
        std::vector<OrderView> own;
        m_market.ordersOf(intent.account, own);
        if (!own.empty() && m_random.chance(60))
            command.orders.push_back(
                own[static_cast<std::size_t>(m_random.below(static_cast<std::int64_t>(own.size())))]
                    .order);
        return command;
    }

    void send(std::size_t intent)
    {
        m_network.push_back({intent, false, false});
        if (m_random.chance(12)) {
            ++m_counts["message doubled"];
            m_network.push_back({intent, false, false});
        }
        // An impatient client asks while its action may still be on its way.
        if (m_random.chance(6))
            m_network.push_back({intent, false, true});
    }

    void deliver()
    {
        if (m_network.empty())
            return;
        const auto which
            = m_random.chance(60) ? 0 : m_random.below(static_cast<std::int64_t>(m_network.size()));
        if (which != 0)
            ++m_counts["message overtook another"];
        const Message message = m_network[static_cast<std::size_t>(which)];
        m_network.erase(m_network.begin() + which);
        const Intent &intent = m_intents[message.intent];
        // A network does not keep a message for two trading days.
        if (intent.session + 1 < m_market.session().value())
            return;
        const Result result = serve(
            message.asking
                ? Command(BurnKey{intent.account, m_random.chance(99) ? intent.key : ActionKey()})
                : intent.command);
        if (result.status == Status::BadKey)
            return;
        if (message.asking && result.status == Status::Exists)
            ++m_counts["answer told to who asked"];
        if (!message.asking && result.status == Status::KeyBurnt)
            ++m_counts["action refused for its burnt key"];
        if (result.status == Status::Exists)
            ++m_counts["action answered from its key"];
        if (!message.stale)
            m_waiting.push_back({message.intent, result});
    }

    /** A copy of an answered message comes out of the network again. */
    void replayOld()
    {
        if (m_intents.empty())
            return;
        const auto which
            = static_cast<std::size_t>(m_random.below(static_cast<std::int64_t>(m_intents.size())));
        if (m_intents[which].resolved && !m_intents[which].ambiguous) {
            ++m_counts["old message replayed"];
            m_network.push_back({which, true, false});
        }
    }

    void jump()
    {
        const std::int64_t by = m_random.between(-40, 40) * 86'400'000;
        ++m_counts[by < 0 ? "clock jumped back" : "clock jumped ahead"];
        m_now += by;
    }

    void operate()
    {
        const AccountId account(m_random.between(1, kAccounts));
        const CollectionId collection(11 * m_random.between(1, kCollections));
        switch (m_random.below(6)) {
        case 0:
            serve(SettleDay{TradingDay(m_market.day().value() + m_random.between(-1, 1))});
            break;
        case 1:
            serve(SetPhase{false});
            break;
        case 2:
            serve(SuspendCollection{collection, true});
            break;
        case 3:
            serve(FreezeAccount{account, true});
            break;
        case 4:
            serve(SetFeeRate{account, m_random.chance(50) ? collection : CollectionId(0),
                             PartsPerMillion(m_random.between(0, 120'000))});
            break;
        default:
            serve(GrantHolding{account,
                               collection,
                               Quantity(m_random.between(-1, 6000)),
                               Fen(m_random.between(0, 50)),
                               {}});
            break;
        }
    }

    void reopen()
    {
        serve(SetPhase{true});
        for (std::int64_t id = 1; id <= kAccounts; ++id)
            serve(FreezeAccount{AccountId(id), false});
        for (std::int64_t id = 1; id <= kCollections; ++id)
            serve(SuspendCollection{CollectionId(id * 11), false});
    }

    /** Applies a command to both markets and holds the answers against each other. */
    Result serve(const Command &command)
    {
        m_now += m_random.below(50);
        const std::size_t before = m_pending.size();
        const Result core = m_market.apply(command, TimeMs(m_now), m_pending);
        const Result slow = m_slow.apply(command);
        m_pendingCommands.push_back(command);
        require(core.status == slow.status && core.first == slow.first && core.order == slow.order
                    && core.revoked == slow.revoked && core.transfer == slow.transfer
                    && core.delivery == slow.delivery,
                std::string("answers differ: core ") + name(core.status) + ", slow "
                    + name(slow.status));
        ++m_counts[std::string("answer: ") + name(core.meaning())];
        std::vector<SlowMarket::Trade> trades;
        for (std::size_t i = before; i < m_pending.size(); ++i) {
            if (const auto *deal = std::get_if<Deal>(&m_pending[i]))
                trades.push_back({deal->maker.value(), deal->taker.value(), deal->price.value(),
                                  deal->quantity.value(), deal->buyerFee.value(),
                                  deal->sellerFee.value()});
            if (const auto *done = std::get_if<OrderDone>(&m_pending[i])) {
                if (done->reason == DoneReason::SelfTrade)
                    ++m_counts["own order given way"];
                if (done->reason == DoneReason::Revoked)
                    ++m_counts["order revoked"];
                if (done->reason == DoneReason::Ended)
                    ++m_counts["order ended with the day"];
            }
            if (const auto *ended = std::get_if<TransferEnded>(&m_pending[i]))
                ++m_counts[std::string(ended->incoming ? "money in " : "money out ")
                           + (ended->done ? "done" : "refused by the bank")];
            if (const auto *moved = std::get_if<DeliveryMoved>(&m_pending[i])) {
                static constexpr const char *stages[]
                    = {"", "prepared", "sent", "refused by the carrier", "cancelled"};
                ++m_counts[std::string("delivery ") + stages[static_cast<int>(moved->stage)]];
            }
            if (const auto *accepted = std::get_if<OrderAccepted>(&m_pending[i])) {
                if (accepted->side == Side::Buy
                    && accepted->feeCap
                        < share(accepted->price * accepted->quantity, accepted->fee))
                    ++m_counts["fee capped by the money there"];
            }
        }
        require(trades == m_slow.trades(), "deals differ");
        m_counts["deal"] += static_cast<std::int64_t>(trades.size());
        return core;
    }

    /** The batch becomes durable, then its answers go out. */
    void commit()
    {
        if (!store())
            return;
        check();
        for (const Waiting &waiting : m_waiting) {
            if (m_random.chance(15)) {
                ++m_counts["answer lost"];
                if (m_random.chance(70))
                    send(waiting.intent);
                if (m_random.chance(30))
                    m_network.push_back({waiting.intent, false, true});
                continue;
            }
            learn(waiting.intent, waiting.result);
        }
        m_waiting.clear();
    }

    bool store()
    {
        if (m_pendingCommands.empty())
            return false;
        std::string bytes;
        for (const Event &event : m_pending)
            encode(event, bytes);
        m_disk.batches.push_back(bytes);
        m_disk.all.push_back(bytes);
        m_disk.commands.insert(m_disk.commands.end(), m_pendingCommands.begin(),
                               m_pendingCommands.end());
        m_disk.hash = m_market.stateHash();
        m_disk.session = m_market.session().value();
        m_pending.clear();
        m_pendingCommands.clear();
        return true;
    }

    void check()
    {
        const auto violation = m_market.audit();
        require(!violation, "audit: " + violation.value_or(""));
        const std::string core = pictureOf(m_market);
        const std::string slow = m_slow.picture();
        if (core != slow)
            throw Failure("states differ: " + difference(core, slow));
    }

    void learn(std::size_t which, const Result &result)
    {
        Intent &intent = m_intents[which];
        const Status status = result.meaning();
        // These say that the action was not looked at; they stand for nothing later.
        if (result.status == Status::TooManyActions || result.status == Status::KeyDiffers
            || result.status == Status::AccountUnknown) {
            intent.ambiguous = true;
            intent.resolved = true;
            return;
        }
        if (intent.resolved && !intent.ambiguous) {
            require(intent.answer == status && intent.order == result.order,
                    "one action was answered in two ways");
            ++m_counts["second answer to one action"];
        }
        intent.resolved = true;
        intent.answer = status;
        intent.order = result.order;
    }

    void checkpoint()
    {
        // Only what is durable may go into a checkpoint.
        commit();
        m_disk.checkpoint = m_market.checkpoint();
        m_disk.batches.clear();
        ++m_counts["checkpoint written"];
    }

    void crash()
    {
        if (!m_waiting.empty() && m_random.chance(40)) {
            // The batch reached the disk, and the service died before it told anyone.
            store();
            ++m_counts["crash after commit, answers unsent"];
        } else if (!m_pendingCommands.empty()) {
            ++m_counts["crash before commit"];
        } else {
            ++m_counts["crash at rest"];
        }
        for (const Waiting &waiting : m_waiting)
            send(waiting.intent);
        m_waiting.clear();
        m_pending.clear();
        m_pendingCommands.clear();

        m_market = recovered(m_disk.checkpoint, m_disk.batches);
        if (!m_disk.batches.empty())
            ++m_counts["recovery from checkpoint and events"];
        require(m_market.stateHash() == m_disk.hash, "recovery gave another state");
        m_slow = newSlow();
        for (const Command &command : m_disk.commands)
            m_slow.apply(command);
        check();
    }

    Market recovered(const std::string &from, const std::vector<std::string> &batches) const
    {
        Market market
            = from.empty() ? Market(TradingDay(kDay), m_limits) : Market::restore(from, m_limits);
        for (const std::string &batch : batches) {
            std::string_view bytes = batch;
            while (!bytes.empty()) {
                Event event;
                require(decode(bytes, event), "an event that was stored does not decode");
                market.replay(event);
            }
        }
        return market;
    }

    /** Every client asks until it knows; then every intent must have had one effect or none. */
    void settleDown()
    {
        while (!m_network.empty())
            deliver();
        commit();
        for (std::size_t i = 0; i < m_intents.size(); ++i) {
            Intent &intent = m_intents[i];
            if (intent.resolved || intent.session + 1 < m_market.session().value())
                continue;
            const auto known = m_market.answerOf(intent.account, intent.key);
            if (known && !intent.ambiguous) {
                ++m_counts["answer asked for by its key"];
                learn(i, *known);
            }
        }
        commit();
        judgeIntents();

        judgeTransfers();
        judgeDeliveries();

        const Market again = recovered({}, m_disk.all);
        require(again.stateHash() == m_market.stateHash(),
                "all events from the beginning give another state");
        const std::string bytes = m_market.checkpoint();
        require(again.checkpoint() == bytes, "the same state has another checkpoint");
        require(Market::restore(bytes, m_limits).stateHash() == m_market.stateHash(),
                "the checkpoint gives another state");
    }

    void judgeIntents()
    {
        // What the disk says was placed under each key.
        std::map<std::pair<std::uint64_t, std::uint64_t>, std::vector<std::int64_t>> placed;
        std::int64_t orders = 0;
        for (const std::string &batch : m_disk.all) {
            std::string_view bytes = batch;
            std::int64_t last = 0;
            Event event;
            while (!bytes.empty() && decode(bytes, event)) {
                if (const auto *accepted = std::get_if<OrderAccepted>(&event)) {
                    last = accepted->order.value();
                    ++orders;
                }
                const auto *answered = std::get_if<ActionAnswered>(&event);
                if (answered && last != 0 && answered->order.value() == last) {
                    placed[{answered->key.high, answered->key.low}].push_back(last);
                    last = 0;
                }
            }
        }
        std::int64_t keyed = 0;
        for (const auto &[key, numbers] : placed) {
            require(numbers.size() == 1, "one intent, two orders");
            ++keyed;
        }
        require(keyed == orders, "an order that nobody meant");
        for (const Intent &intent : m_intents) {
            if (!intent.resolved || !intent.placing || intent.ambiguous)
                continue;
            const auto found = placed.find({intent.key.high, intent.key.low});
            const bool effect = found != placed.end();
            require(effect == (intent.answer == Status::Accepted),
                    "a client was told something else than happened");
            if (effect)
                require(found->second.front() == intent.order.value(),
                        "a client knows another order number");
        }
        m_counts["intent judged"] += static_cast<std::int64_t>(m_intents.size());
    }

    /** The money of the market, counted from the disk alone: each transfer moved it once or never.
     */
    void judgeTransfers()
    {
        std::map<std::int64_t, bool> begun; // number, whether it ended
        std::map<std::pair<std::uint64_t, std::uint64_t>, int> keys;
        std::int64_t moved = 0;
        std::int64_t frozen = 0;
        for (const std::string &batch : m_disk.all) {
            std::string_view bytes = batch;
            Event event;
            while (!bytes.empty() && decode(bytes, event)) {
                if (const auto *cash = std::get_if<CashMoved>(&event))
                    moved += cash->amount.value();
                if (const auto *begins = std::get_if<TransferBegun>(&event)) {
                    require(begun.emplace(begins->transfer.value(), false).second,
                            "a transfer began twice");
                    require(++keys[{begins->key.high, begins->key.low}] == 1,
                            "one intent, two transfers");
                    frozen += begins->incoming ? 0 : begins->amount.value();
                }
                if (const auto *ended = std::get_if<TransferEnded>(&event)) {
                    const auto found = begun.find(ended->transfer.value());
                    require(found != begun.end() && !found->second,
                            "a transfer ended that was not under way");
                    found->second = true;
                    frozen -= ended->incoming ? 0 : ended->amount.value();
                    if (ended->done)
                        moved += ended->incoming ? ended->amount.value() : -ended->amount.value();
                }
            }
        }
        std::int64_t there = m_market.feesEarned().value();
        for (const AccountId id : m_market.accounts()) {
            const AccountView account = *m_market.account(id);
            there += account.available.value() + account.frozenCash.value();
            std::vector<OrderView> orders;
            m_market.ordersOf(id, orders);
            frozen -= account.frozenCash.value();
            for (const OrderView &order : orders)
                frozen += order.frozenCash.value();
        }
        require(there == moved, "money was made or lost");
        require(frozen == 0, "frozen money is not that of orders and transfers");
    }

    /** The pieces of the market, counted from the disk alone: each was sent once or is there. */
    void judgeDeliveries()
    {
        std::map<std::int64_t, bool> ended; // by number
        std::map<std::pair<std::uint64_t, std::uint64_t>, int> keys;
        std::map<std::int64_t, std::int64_t> there; // by collection
        std::map<std::int64_t, std::int64_t> frozen;
        for (const std::string &batch : m_disk.all) {
            std::string_view bytes = batch;
            Event event;
            while (!bytes.empty() && decode(bytes, event)) {
                if (const auto *granted = std::get_if<HoldingMoved>(&event))
                    there[granted->collection.value()] += granted->quantity.value();
                if (const auto *asked = std::get_if<DeliveryRequested>(&event)) {
                    require(ended.emplace(asked->delivery.value(), false).second,
                            "a delivery began twice");
                    require(++keys[{asked->key.high, asked->key.low}] == 1,
                            "one intent, two deliveries");
                    frozen[asked->collection.value()] += asked->quantity.value();
                }
                const auto *moved = std::get_if<DeliveryMoved>(&event);
                if (!moved || moved->stage == DeliveryStage::Preparing)
                    continue;
                const auto found = ended.find(moved->delivery.value());
                require(found != ended.end() && !found->second,
                        "a delivery ended that was not under way");
                found->second = true;
                frozen[moved->collection.value()] -= moved->quantity.value();
                if (moved->stage == DeliveryStage::Sent)
                    there[moved->collection.value()] -= moved->quantity.value();
            }
        }
        for (const AccountId id : m_market.accounts()) {
            std::vector<HoldingView> holdings;
            m_market.holdingsOf(id, holdings);
            for (const HoldingView &holding : holdings) {
                there[holding.collection.value()] -= holding.quantity.value();
                frozen[holding.collection.value()] -= holding.frozen.value();
            }
            std::vector<OrderView> orders;
            m_market.ordersOf(id, orders);
            for (const OrderView &order : orders)
                frozen[order.collection.value()]
                    += order.side == Side::Sell ? order.remaining.value() : 0;
        }
        for (const auto &[collection, pieces] : there)
            require(pieces == 0, "pieces were made or lost");
        for (const auto &[collection, pieces] : frozen)
            require(pieces == 0, "frozen pieces are not those of orders and deliveries");
    }

    Random m_random;
    Counts &m_counts;
    Limits m_limits;
    Market m_market;
    SlowMarket m_slow;
    std::int64_t m_now = 1'577'836'800'000;
    std::vector<Intent> m_intents;
    std::vector<Message> m_network;
    std::vector<Waiting> m_waiting;
    std::vector<Event> m_pending;
    std::vector<Command> m_pendingCommands;
    Disk m_disk;
};

} // namespace

Counts emptyCounts()
{
    Counts counts;
    for (const char *what : {"message doubled",
                             "message overtook another",
                             "old message replayed",
                             "answer lost",
                             "answer asked for by its key",
                             "answer told to who asked",
                             "action refused for its burnt key",
                             "action answered from its key",
                             "second answer to one action",
                             "key used for two things",
                             "clock jumped back",
                             "clock jumped ahead",
                             "crash before commit",
                             "crash after commit, answers unsent",
                             "crash at rest",
                             "recovery from checkpoint and events",
                             "checkpoint written",
                             "deal",
                             "own order given way",
                             "order revoked",
                             "order ended with the day",
                             "fee capped by the money there",
                             "money in done",
                             "money in refused by the bank",
                             "money out done",
                             "money out refused by the bank",
                             "delivery prepared",
                             "delivery sent",
                             "delivery refused by the carrier",
                             "delivery cancelled",
                             "intent judged"})
        counts[what] = 0;
    for (const Status status : {Status::Accepted,
                                Status::AccountUnknown,
                                Status::KeyDiffers,
                                Status::TooManyActions,
                                Status::AccountFrozen,
                                Status::MarketClosed,
                                Status::CollectionUnknown,
                                Status::CollectionSuspended,
                                Status::PriceOutsideLimits,
                                Status::BadTick,
                                Status::BadQuantity,
                                Status::NotEnoughMoney,
                                Status::NotEnoughHoldings,
                                Status::TooManyOpenOrders,
                                Status::OrderUnknown,
                                Status::OrderDone,
                                Status::NotYourOrder,
                                Status::BadAmount,
                                Status::BadRate,
                                Status::BadDay,
                                Status::KeyBurnt,
                                Status::BadKey,
                                Status::NoBankCard,
                                Status::AboveTransferLimit,
                                Status::AboveDayLimit,
                                Status::TooManyTransfers,
                                Status::TransferUnknown,
                                Status::TransferDone,
                                Status::TooManyDeliveries,
                                Status::DeliveryUnknown,
                                Status::DeliveryDone})
        counts[std::string("answer: ") + name(status)] = 0;
    return counts;
}

campaign::Failure liveThrough(std::uint64_t seed, Counts &counts)
{
    try {
        World(seed, counts).live();
    } catch (const std::exception &error) {
        return std::string(error.what());
    }
    return std::nullopt;
}
