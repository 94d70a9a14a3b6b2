#pragma once

#include "exchange/store/projector.h"
#include "exchange/store/tables.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

/// A store that cannot be opened, read or written. what() names the file and the reason.
class StoreError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// One command that did something: its outcome, never the wish.
struct StoredCommand {
    std::int64_t number = 0; ///< 1, 2, 3 ... without holes
    TimeMs time;
    ActionKey key; ///< null where the command had none
    std::string events; ///< encoded one after another, see eventcodec.h
};

/// The state of the market after a command.
struct StoredCheckpoint {
    std::int64_t number = 0; ///< of the last command that it contains, 0 before the first
    std::uint64_t hash = 0; ///< Market::stateHash()
    std::string state; ///< Market::checkpoint()
};

/// What one commit makes durable, all of it or nothing.
struct Batch {
    std::vector<StoredCommand> commands; ///< following the last one stored
    TableUpdate tables;
    std::optional<StoredCheckpoint> checkpoint;
};

/// A collection's name as the catalogue had it last, for those that left the catalogue.
struct ListingRow {
    CollectionId collection;
    std::string code;
    std::string name;
    int type = 0;
    std::string introduction;
};

/**
 * The durable memory of one market.
 *
 * One thread at a time. Everything throws StoreError; after a commit that threw nothing may be
 * called any more but the destructor: what the disk holds is only known after opening it again.
 */
class Store : public StoredRows
{
public:
    /// Number of the last stored command, 0 before the first.
    virtual std::int64_t lastCommand() = 0;

    /// Numbers of the stored checkpoints, the newest first.
    virtual std::vector<std::int64_t> checkpoints() = 0;
    virtual StoredCheckpoint checkpoint(std::int64_t number) = 0;

    using CommandVisitor = std::function<void(const StoredCommand &)>;
    /// Visits the commands `first` to `last`, both included, in their order. Throws where one of
    /// them is missing.
    virtual void readCommands(std::int64_t first, std::int64_t last, const CommandVisitor &visit)
        = 0;

    /// Makes the batch durable. Returns when it is.
    virtual void commit(const Batch &batch) = 0;

    /// Empties the tables and calls `rebuild`, which fills them again through `put`; all of it is
    /// one transaction, and none of it happens when `rebuild` throws.
    using TablePutter = std::function<void(const TableUpdate &)>;
    virtual void rebuildTables(const std::function<void(const TablePutter &put)> &rebuild) = 0;

    /// Whether the tables hold nothing at all, as after a step to a new version that empties them.
    virtual bool tablesAreEmpty() = 0;

    /// All rows of all tables as text, one line a row in the order of their keys, for comparisons.
    virtual std::string describeTables() = 0;

    /// The last `limit` deals of the collection in a session, oldest first.
    virtual std::vector<DealRow> latestDeals(CollectionId collection, Sequence session,
                                             std::size_t limit)
        = 0;
    virtual Sequence lastDeal() = 0;
    virtual OrderNumber lastOrder() = 0;
    virtual std::optional<CompositeRow> composite(Sequence session) = 0;

    virtual std::vector<ListingRow> listings() = 0;
    /// Inserts or replaces; durable on return.
    virtual void putListings(const std::vector<ListingRow> &rows) = 0;
};

} // namespace zvx
