#pragma once

#include "exchange/core/market.h"
#include "exchange/store/catalogue.h"
#include "exchange/store/projector.h"
#include "exchange/store/store.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace zvx::test {

constexpr std::chrono::seconds kPatience{30}; ///< longest wait for another thread
constexpr TimeMs kMorning{1'577'840'400'000}; ///< 2020-01-01 09:00 in UTC+8

/// A folder that goes with the object.
class TempFolder
{
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;

    const std::filesystem::path &path() const { return m_path; }
    std::filesystem::path operator/(const std::string &name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

std::string readFile(const std::filesystem::path &file);
void writeFile(const std::filesystem::path &file, const std::string &text);
std::filesystem::path dataFile(const std::string &name);

/// The first market of the small catalogue: eight collections with the ids 1100 to 1107.
CatalogueMarket smallMarket();

/// Commands as a busy market sees them: orders around the last prices, with keys, deals, revokes,
/// money in and out, transfers and deliveries with the words of banks and carriers on them,
/// refusals, and now and then the end of a day. The same seed gives the same.
class RandomTrading
{
public:
    RandomTrading(std::uint32_t seed, const CatalogueMarket &market);

    /// Opens the accounts and gives them money and pieces.
    std::vector<Command> opening();
    Command next();

    /// A key that no other call of this process's history returned.
    ActionKey newKey();

    static constexpr std::int64_t kAccounts = 12;

private:
    std::int64_t pick(std::int64_t least, std::int64_t most);

    std::mt19937 m_random;
    CatalogueMarket m_market;
    std::uint64_t m_keys = 0;
    std::int64_t m_transfers = 0; ///< that were begun, refused ones as well
    std::int64_t m_deliveries = 0; ///< likewise
    std::uint32_t m_seed;
};

/// Carries commands out as the writer does, some in a batch, without a thread.
class Scribe
{
public:
    /// Goes on behind what `store` holds; `market` is as of its last command.
    Scribe(Store &store, Market market);

    /// All of them in one commit.
    void carryOut(const std::vector<Command> &commands, bool checkpoint = false);

    const Market &market() const { return m_market; }
    std::int64_t last() const { return m_last; }

    TimeMs now = kMorning; ///< of the commands to come
    std::vector<Event> happened; ///< so far, where `remember` is set
    bool remember = false;

private:
    Store &m_store;
    Market m_market;
    Projector m_projector;
    std::int64_t m_last;
};

/// Lists what the market's catalogue names, and opens the market.
std::vector<Command> listing(const CatalogueMarket &market);

/// Passes everything on to another store, and calls a hook before each commit, which may wait or
/// throw.
class HookedStore : public Store
{
public:
    using Hook = std::function<void(const Batch &)>;
    HookedStore(std::unique_ptr<Store> store, Hook beforeCommit);

    std::int64_t lastCommand() override { return m_store->lastCommand(); }
    std::vector<std::int64_t> checkpoints() override { return m_store->checkpoints(); }
    StoredCheckpoint checkpoint(std::int64_t n) override { return m_store->checkpoint(n); }
    void readCommands(std::int64_t first, std::int64_t last, const CommandVisitor &visit) override
    {
        m_store->readCommands(first, last, visit);
    }
    void commit(const Batch &batch) override
    {
        m_beforeCommit(batch);
        m_store->commit(batch);
    }
    void rebuildTables(const std::function<void(const TablePutter &)> &rebuild) override
    {
        m_store->rebuildTables(rebuild);
    }
    bool tablesAreEmpty() override { return m_store->tablesAreEmpty(); }
    std::string describeTables() override { return m_store->describeTables(); }
    std::vector<DealRow> latestDeals(CollectionId id, Sequence session, std::size_t limit) override
    {
        return m_store->latestDeals(id, session, limit);
    }
    std::optional<OrderRow> order(OrderNumber number) override { return m_store->order(number); }
    Sequence lastDeal() override { return m_store->lastDeal(); }
    OrderNumber lastOrder() override { return m_store->lastOrder(); }
    std::optional<CompositeRow> composite(Sequence session) override
    {
        return m_store->composite(session);
    }
    std::int64_t lastFlow() override { return m_store->lastFlow(); }
    FlowPlaces flowPlaces(AccountId account) override { return m_store->flowPlaces(account); }
    std::optional<FlowRow> flowOf(TransferNumber transfer) override
    {
        return m_store->flowOf(transfer);
    }
    std::int64_t lastDeliveryPlace(AccountId account) override
    {
        return m_store->lastDeliveryPlace(account);
    }
    std::optional<DeliveryRow> delivery(DeliveryNumber number) override
    {
        return m_store->delivery(number);
    }
    std::optional<RecordRow> records(AccountId account) override
    {
        return m_store->records(account);
    }
    std::optional<GatherRow> gather(AccountId account, CollectionId collection) override
    {
        return m_store->gather(account, collection);
    }
    HoldingView holding(AccountId account, CollectionId collection) override
    {
        return m_store->holding(account, collection);
    }
    std::vector<ListingRow> listings() override { return m_store->listings(); }
    void putListings(const std::vector<ListingRow> &rows) override { m_store->putListings(rows); }

private:
    std::unique_ptr<Store> m_store;
    Hook m_beforeCommit;
};

/// A door between threads: closed at first, whoever passes waits until it is opened.
class Gate
{
public:
    void pass();
    void open();
    /// Waits until somebody stands at the door or went through; false when nobody came in time.
    bool awaitVisitor();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = false;
    int m_visitors = 0;
};

/// Counts up in one thread, is waited for in another.
class Counter
{
public:
    void add();
    int value() const;
    /// Waits until the count is at least `wanted`; false when it did not come in time.
    bool reaches(int wanted);

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_value = 0;
};

} // namespace zvx::test
