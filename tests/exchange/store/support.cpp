#include "exchange/store/support.h"

#include "exchange/core/eventcodec.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zvx::test {

TempFolder::TempFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "zvx-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("no temporary folder");
    m_path = pattern;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string readFile(const std::filesystem::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

void writeFile(const std::filesystem::path &file, const std::string &text)
{
    std::ofstream(file, std::ios::binary) << text;
}

std::filesystem::path dataFile(const std::string &name)
{
    return std::filesystem::path(ZVX_TEST_DATA) / name;
}

CatalogueMarket smallMarket()
{
    return Catalogue::load(dataFile("small-catalogue.json")).platforms().front().markets.front();
}

RandomTrading::RandomTrading(std::uint32_t seed, const CatalogueMarket &market)
    : m_random(seed), m_market(market), m_seed(seed)
{
}

std::vector<Command> RandomTrading::opening()
{
    std::vector<Command> commands;
    for (std::int64_t account = 1; account <= kAccounts; ++account) {
        commands.push_back(OpenAccount{AccountId(account), m_market.fee, {}});
        commands.push_back(Deposit{AccountId(account), Fen(100'000'000'000), newKey()});
        for (const CatalogueCollection &collection : m_market.collections) {
            const Quantity share(collection.listed.value() / kAccounts);
            commands.push_back(GrantHolding{AccountId(account), collection.id, share,
                                            collection.previousClose, newKey()});
        }
    }
    return commands;
}

Command RandomTrading::next()
{
    const AccountId account(pick(1, kAccounts));
    const std::int64_t kind = pick(1, 1000);
    if (kind <= 3)
        return SettleDay{TradingDay(20'200'101)};
    if (kind <= 12)
        return Deposit{account, Fen(pick(0, 1'000'000)), newKey()}; // 0 is refused
    if (kind <= 20)
        return Withdraw{account, Fen(pick(1, 1'000'000)), newKey()};
    if (kind <= 40) {
        BeginTransfer transfer;
        transfer.account = account;
        transfer.incoming = pick(0, 1) == 0;
        transfer.amount = Fen(pick(0, 1'000'000));
        transfer.bank = newKey();
        transfer.card = m_keys;
        transfer.key = newKey();
        ++m_transfers;
        return transfer;
    }
    if (kind <= 60)
        return EndTransfer{TransferNumber(pick(1, m_transfers + 1)), pick(0, 2) > 0};
    if (kind <= 80) {
        RequestDelivery delivery;
        delivery.account = account;
        delivery.collection
            = m_market
                  .collections[static_cast<std::size_t>(pick(0, 7)) % m_market.collections.size()]
                  .id;
        delivery.quantity = Quantity(pick(0, 5)); // 0 is refused
        delivery.parcel = newKey();
        delivery.key = newKey();
        ++m_deliveries;
        return delivery;
    }
    if (kind <= 90)
        return AdvanceDelivery{DeliveryNumber(pick(1, m_deliveries + 1)),
                               static_cast<DeliveryStage>(pick(1, 3))};
    if (kind <= 95)
        return CancelDelivery{account, DeliveryNumber(pick(1, m_deliveries + 1)), newKey()};
    if (kind <= 150) {
        RevokeOrders revoke;
        revoke.account = account;
        revoke.orders = {OrderNumber(pick(1, 200))};
        revoke.key = newKey();
        return revoke;
    }
    const auto &collection
        = m_market.collections[static_cast<std::size_t>(pick(0, 7)) % m_market.collections.size()];
    PlaceOrder order;
    order.account = account;
    order.collection = collection.id;
    order.side = pick(0, 1) == 0 ? Side::Buy : Side::Sell;
    // Twelve per cent around the previous close: some prices lie outside the limits.
    const std::int64_t width
        = std::max<std::int64_t>(collection.previousClose.value() * 12 / 100, 1);
    order.price
        = Fen(std::max<std::int64_t>(collection.previousClose.value() + pick(-width, width), 1));
    order.quantity = Quantity(pick(1, 20));
    order.key = newKey();
    return order;
}

ActionKey RandomTrading::newKey()
{
    return {std::uint64_t(m_seed) + 1, ++m_keys};
}

std::int64_t RandomTrading::pick(std::int64_t least, std::int64_t most)
{
    return std::uniform_int_distribution<std::int64_t>(least, most)(m_random);
}

Scribe::Scribe(Store &store, Market market)
    : m_store(store), m_market(std::move(market)),
      m_projector(m_market, store.composite(m_market.session()), &store),
      m_last(store.lastCommand())
{
}

void Scribe::carryOut(const std::vector<Command> &commands, bool checkpoint)
{
    Batch batch;
    for (const Command &command : commands) {
        std::vector<Event> events;
        m_market.apply(command, now, events);
        if (events.empty())
            continue;
        StoredCommand stored{++m_last, now, {}, {}};
        for (const Event &event : events) {
            encode(event, stored.events);
            m_projector.take(event);
        }
        batch.commands.push_back(stored);
        if (remember)
            happened.insert(happened.end(), events.begin(), events.end());
    }
    batch.tables = m_projector.finish(m_market);
    if (checkpoint)
        batch.checkpoint = StoredCheckpoint{m_last, m_market.stateHash(), m_market.checkpoint()};
    m_store.commit(batch);
}

std::vector<Command> listing(const CatalogueMarket &market)
{
    std::vector<Command> commands;
    for (const CatalogueCollection &entry : market.collections) {
        ListCollection list;
        list.collection = entry.id;
        list.previousClose = entry.previousClose;
        list.issued = entry.listed;
        commands.push_back(list);
    }
    commands.push_back(SetPhase{true});
    return commands;
}

HookedStore::HookedStore(std::unique_ptr<Store> store, Hook beforeCommit)
    : m_store(std::move(store)), m_beforeCommit(std::move(beforeCommit))
{
}

void Gate::pass()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    ++m_visitors;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_open; });
}

void Gate::open()
{
    std::lock_guard<std::mutex> guard(m_mutex);
    m_open = true;
    m_changed.notify_all();
}

bool Gate::awaitVisitor()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [this] { return m_visitors > 0; });
}

void Counter::add()
{
    std::lock_guard<std::mutex> guard(m_mutex);
    ++m_value;
    m_changed.notify_all();
}

int Counter::value() const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_value;
}

bool Counter::reaches(int wanted)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [&] { return m_value >= wanted; });
}

} // namespace zvx::test
