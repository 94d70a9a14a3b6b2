#pragma once

#include "exchange/store/store.h"

#include <filesystem>
#include <memory>
#include <string>

namespace zvx {

/// A store in one SQLite file: write-ahead log, every commit synced before it returns.
class SqliteStore : public Store
{
public:
    static constexpr int kLogFrames = 2'000;

    /// Opens the file or makes it, and brings it to the newest version. `vfs` names a SQLite VFS
    /// that was registered before; "" is the machine's own. The write-ahead log is moved into the
    /// file by the first commit that leaves `logFrames` pages in it. Throws StoreError.
    explicit SqliteStore(const std::filesystem::path &file, const std::string &vfs = {},
                         int logFrames = kLogFrames);
    ~SqliteStore() override;

    /// As SqliteConnection::drainReadersWith().
    void drainReadersWith(std::function<void()> drain);

    std::int64_t lastCommand() override;
    std::vector<std::int64_t> checkpoints() override;
    StoredCheckpoint checkpoint(std::int64_t number) override;
    void readCommands(std::int64_t first, std::int64_t last, const CommandVisitor &visit) override;
    void commit(const Batch &batch) override;
    void rebuildTables(const std::function<void(const TablePutter &put)> &rebuild) override;
    bool tablesAreEmpty() override;
    std::string describeTables() override;
    std::vector<DealRow> latestDeals(CollectionId collection, Sequence session,
                                     std::size_t limit) override;
    std::optional<OrderRow> order(OrderNumber number) override;
    Sequence lastDeal() override;
    OrderNumber lastOrder() override;
    std::optional<CompositeRow> composite(Sequence session) override;
    std::int64_t lastFlow() override;
    FlowPlaces flowPlaces(AccountId account) override;
    std::optional<FlowRow> flowOf(TransferNumber transfer) override;
    std::int64_t lastDeliveryPlace(AccountId account) override;
    std::optional<DeliveryRow> delivery(DeliveryNumber number) override;
    std::optional<RecordRow> records(AccountId account) override;
    std::optional<GatherRow> gather(AccountId account, CollectionId collection) override;
    HoldingView holding(AccountId account, CollectionId collection) override;
    std::vector<ListingRow> listings() override;
    void putListings(const std::vector<ListingRow> &rows) override;

private:
    class Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace zvx
