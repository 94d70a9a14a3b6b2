#pragma once

#include "exchange/core/event.h"
#include "exchange/core/types.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zvx {

/// Position of a collection in the order of the market list; fixed while the service runs.
using Row = std::uint32_t;

/// What never changes while the service runs.
struct CollectionInfo {
    CollectionId id;
    std::string code;
    std::string name;
    std::vector<std::string> initials;
    int type = 0;
    Quantity listed;
    std::string introduction;
    bool suspended = false; ///< cannot be traded; stays on the list for those who hold it
};

/// The moving part of one row of the market list. An absent figure does not exist yet.
struct Quote {
    std::optional<Fen> latest;
    Fen previousClose;
    std::optional<Fen> open;
    std::optional<Fen> high;
    std::optional<Fen> low;
    std::optional<Fen> bid;
    std::optional<Fen> ask;
    Quantity bidQuantity; ///< at the best buy price; 0 where there is none
    Quantity askQuantity;
    Quantity volume; ///< pieces since the session's start
    Fen amount; ///< fen since the session's start

    bool operator==(const Quote &other) const;
    bool operator!=(const Quote &other) const { return !(*this == other); }
};

/// One bit for each figure of a Quote, as list deltas name them.
enum class QuoteField : std::uint16_t {
    Latest = 1u << 0,
    PreviousClose = 1u << 1,
    Open = 1u << 2,
    High = 1u << 3,
    Low = 1u << 4,
    Bid = 1u << 5,
    Ask = 1u << 6,
    BidQuantity = 1u << 7,
    AskQuantity = 1u << 8,
    Volume = 1u << 9,
    Amount = 1u << 10,
};

/// A set of QuoteField bits.
class QuoteFields
{
public:
    QuoteFields() = default;
    void add(QuoteField field) { m_bits = static_cast<std::uint16_t>(m_bits | bit(field)); }
    void add(QuoteFields other) { m_bits = static_cast<std::uint16_t>(m_bits | other.m_bits); }
    bool has(QuoteField field) const { return (m_bits & bit(field)) != 0; }
    bool empty() const { return m_bits == 0; }
    bool operator==(QuoteFields other) const { return m_bits == other.m_bits; }

private:
    static std::uint16_t bit(QuoteField field) { return static_cast<std::uint16_t>(field); }
    std::uint16_t m_bits = 0;
};

/// The fields in which the two quotes differ.
QuoteFields changedFields(const Quote &before, const Quote &after);

/// Day figures of one collection beyond what its Quote holds.
struct ItemFigures {
    Quote quote; ///< as of this publication, fresher than the list's own
    Quantity outer; ///< pieces of deals in which the buyer came second
    Quantity inner; ///< pieces of deals in which the seller came second
    Quantity buyQuantity; ///< sum of the five buy levels
    Quantity sellQuantity;

    bool operator==(const ItemFigures &other) const;
};

struct PriceLevel {
    Fen price;
    Quantity quantity;

    bool operator==(const PriceLevel &other) const;
};

/// The best five levels of each side, best first.
struct TradeLevels {
    std::optional<Fen> latest;
    Fen previousClose;
    Fen lowerLimit;
    Fen upperLimit;
    std::vector<PriceLevel> sells;
    std::vector<PriceLevel> buys;

    bool operator==(const TradeLevels &other) const;
};

/// One deal as the list of latest deals shows it.
struct DealSnapshot {
    Sequence sequence; ///< counts the deals of the market from 1
    TimeMs time;
    Fen price;
    Quantity quantity;
    Side taker = Side::Buy; ///< the side that came second
};

DealSnapshot dealSnapshot(const Deal &deal);

/// Deals of one collection in the running session, oldest first, at most kLatestDeals of them.
using LatestDeals = std::vector<DealSnapshot>;
constexpr std::size_t kLatestDeals = 200;

/// A published value with its version; versions start at 1 with the boot.
template <typename T>
struct Published {
    std::uint64_t version = 0;
    std::shared_ptr<const T> data;
};

/// What clients watch of one collection.
struct CollectionSnapshot {
    std::shared_ptr<const CollectionInfo> info;
    Published<ItemFigures> item;
    Published<TradeLevels> trade;
    Published<LatestDeals> latest;
};

struct CheckSnapshot {
    bool open = false;
    TradingDay day;
    Sequence session; ///< counts from 1

    bool operator==(const CheckSnapshot &other) const;
};

/// The market as a whole: a value-weighted index in hundredths of a point, 100,000 at the first
/// session's start, and the sums over all collections. The bid and ask figures stay empty.
struct CompositeSnapshot {
    Quote quote;
    Quantity listed; ///< sum over all collections

    bool operator==(const CompositeSnapshot &other) const;
};

struct TypeSnapshot {
    int id = 0;
    std::string name;
};

/// A trading day as the wire has it: "2020-01-01".
std::string dayText(TradingDay day);

/// The rows of one published list that differ from the list before, and in which fields.
struct ListDelta {
    struct Change {
        Row row = 0;
        QuoteFields fields;
    };
    std::uint64_t version = 0; ///< the version that this delta leads to, from version - 1
    std::vector<Change> changes; ///< by ascending row
};

/// The market list: its rows and the way to it from the last versions.
struct ListSnapshot {
    std::uint64_t version = 0;
    std::vector<std::shared_ptr<const Quote>> rows; ///< in the order of MarketSnapshot::infos
    std::vector<std::shared_ptr<const ListDelta>> history; ///< oldest first, without holes

    /// What changed from version `base` to this one, by ascending row; values stand in `rows`.
    /// Empty optional: `base` is unknown, too old or not older, the whole list is needed.
    std::optional<std::vector<ListDelta::Change>> changesSince(std::uint64_t base) const;
};

/// Everything that readers may know of a market at one moment. Never changes once published.
struct MarketSnapshot {
    using Infos = std::vector<std::shared_ptr<const CollectionInfo>>;

    Published<std::vector<TypeSnapshot>> types; ///< topic "type"
    Published<Infos> infos; ///< topic "brief"; the row order of the whole market
    Published<CheckSnapshot> check;
    Published<CompositeSnapshot> composite;
    std::shared_ptr<const ListSnapshot> list; ///< never null, like all pointers in here
    std::vector<std::shared_ptr<const CollectionSnapshot>> collections; ///< by Row

    /// Row of a collection, or nothing where the market does not list it.
    std::optional<Row> rowOf(CollectionId id) const;

    std::shared_ptr<const std::vector<std::pair<CollectionId, Row>>> index; ///< sorted by id
};

/// What a publication changed.
struct TopicSet {
    bool check = false;
    bool brief = false; ///< a collection was suspended, or trades again
    bool composite = false;
    bool list = false;

    struct Collection {
        Row row = 0;
        bool item = false;
        bool trade = false;
        bool latest = false;
    };
    std::vector<Collection> collections; ///< by ascending row

    bool empty() const { return !check && !brief && !composite && !list && collections.empty(); }
};

} // namespace zvx
