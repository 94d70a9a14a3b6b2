#include "exchange/store/publisher.h"

#include "exchange/core/market.h"

#include <algorithm>
#include <limits>

namespace zvx {
namespace {

constexpr std::size_t kLevels = 5;

std::optional<Fen> traded(Fen price)
{
    return price.value() > 0 ? std::optional<Fen>(price) : std::nullopt;
}

/// A sum for display, which stops at the bound instead of failing.
template <typename Amount>
Amount capped(Wide sum)
{
    return Amount(static_cast<std::int64_t>(std::min<Wide>(sum, kAmountBound)));
}

Quote quoteOf(const DayFigures &day, const std::vector<Level> &buys,
              const std::vector<Level> &sells)
{
    Quote quote;
    quote.latest = traded(day.last);
    quote.previousClose = day.previousClose;
    quote.open = traded(day.open);
    quote.high = traded(day.high);
    quote.low = traded(day.low);
    if (!buys.empty()) {
        quote.bid = buys.front().price;
        quote.bidQuantity = buys.front().quantity;
    }
    if (!sells.empty()) {
        quote.ask = sells.front().price;
        quote.askQuantity = sells.front().quantity;
    }
    quote.volume = day.volume;
    quote.amount = day.amount;
    return quote;
}

std::vector<PriceLevel> priceLevels(const std::vector<Level> &levels)
{
    std::vector<PriceLevel> found;
    found.reserve(levels.size());
    for (const Level &level : levels)
        found.push_back({level.price, level.quantity});
    return found;
}

Quantity sum(const std::vector<Level> &levels)
{
    Wide total = 0;
    for (const Level &level : levels)
        total += level.quantity.value();
    return capped<Quantity>(total);
}

/// Puts a new value in the place of the old one, with the next version, where the two differ.
template <typename T>
bool replace(Published<T> &published, T value)
{
    if (published.data && *published.data == value)
        return false;
    published.data = std::make_shared<const T>(std::move(value));
    ++published.version;
    return true;
}

} // namespace

Publisher::Publisher(std::vector<CatalogueType> types, std::vector<CollectionInfo> infos,
                     const Market &market, const CompositeRow &composite, const DealLoader &deals,
                     const Cadence &cadence)
    : m_cadence(cadence), m_listTouched(infos.size(), true), m_detailsTouched(infos.size(), true),
      m_newDeals(infos.size())
{
    auto next = std::make_shared<MarketSnapshot>();
    auto typeList = std::make_shared<std::vector<TypeSnapshot>>();
    for (CatalogueType &type : types)
        typeList->push_back({type.id, std::move(type.name)});
    next->types = {1, std::move(typeList)};

    auto infoList = std::make_shared<MarketSnapshot::Infos>();
    auto index = std::make_shared<std::vector<std::pair<CollectionId, Row>>>();
    auto list = std::make_shared<ListSnapshot>();
    Wide listed = 0;
    for (CollectionInfo &info : infos) {
        const Row row = static_cast<Row>(infoList->size());
        m_rows[info.id.value()] = row;
        index->push_back({info.id, row});
        listed += info.listed.value();
        for (const DealRow &deal : deals(info.id, kLatestDeals))
            m_newDeals[row].push_back(dealSnapshot(deal.deal));
        infoList->push_back(std::make_shared<const CollectionInfo>(std::move(info)));
        auto collection = std::make_shared<CollectionSnapshot>();
        collection->info = infoList->back();
        collection->latest = {1, std::make_shared<const LatestDeals>()};
        next->collections.push_back(std::move(collection));
    }
    m_listed = capped<Quantity>(listed);
    std::sort(index->begin(), index->end(),
              [](const auto &a, const auto &b) { return a.first < b.first; });
    next->index = std::move(index);
    next->infos = {1, std::move(infoList)};
    list->rows.assign(next->infos.data->size(), std::make_shared<const Quote>());
    next->list = std::move(list);

    TopicSet ignored;
    publishCheck(*next, market, ignored);
    publishList(*next, market, composite, ignored);
    publishDetails(*next, market, ignored);

    // The first list is whole: there is nothing before it that a delta could lead from.
    auto first = std::make_shared<ListSnapshot>(*next->list);
    first->version = 1;
    first->history.clear();
    next->list = std::move(first);
    // Deals were loaded into collections that had version 1 for "none yet".
    for (auto &collection : next->collections) {
        auto copy = std::make_shared<CollectionSnapshot>(*collection);
        copy->latest.version = 1;
        collection = std::move(copy);
    }
    m_snapshot = std::move(next);
}

void Publisher::take(const Event &event)
{
    if (const auto *deal = std::get_if<Deal>(&event)) {
        const auto row = m_rows.find(deal->collection.value());
        if (row == m_rows.end())
            return;
        LatestDeals &deals = m_newDeals[row->second];
        // Twice the list is kept, so that dropping the old half is rare.
        if (deals.size() >= 2 * kLatestDeals)
            deals.erase(deals.begin(), deals.end() - kLatestDeals);
        deals.push_back(dealSnapshot(*deal));
        m_detailsTouched[row->second] = true;
        m_detailsPending = true;
    } else if (std::holds_alternative<DaySettled>(event)) {
        m_checkTouched = true;
        m_dealsEnded = true;
        for (LatestDeals &deals : m_newDeals)
            deals.clear();
        std::fill(m_listTouched.begin(), m_listTouched.end(), true);
        std::fill(m_detailsTouched.begin(), m_detailsTouched.end(), true);
        m_listPending = m_detailsPending = true;
    } else if (std::holds_alternative<PhaseSet>(event)) {
        m_checkTouched = true;
    } else if (std::holds_alternative<CollectionSuspended>(event)) {
        m_infosTouched = true;
    }
}

void Publisher::touch(const std::vector<CollectionId> &collections)
{
    for (const CollectionId id : collections) {
        // What was listed while the service runs has a row after the next start only.
        const auto row = m_rows.find(id.value());
        if (row == m_rows.end())
            continue;
        m_listTouched[row->second] = true;
        m_detailsTouched[row->second] = true;
        m_listPending = m_detailsPending = true;
    }
}

std::optional<SteadyMs> Publisher::due() const
{
    std::optional<SteadyMs> first;
    const auto add = [&first](SteadyMs time) { first = first ? std::min(*first, time) : time; };
    constexpr SteadyMs now = std::numeric_limits<SteadyMs>::min();
    if (m_checkTouched || m_infosTouched)
        add(now);
    if (m_listPending)
        add(m_listPublished ? *m_listPublished + m_cadence.list : now);
    if (m_detailsPending)
        add(m_detailsPublished ? *m_detailsPublished + m_cadence.details : now);
    return first;
}

TopicSet Publisher::publish(const Market &market, const CompositeRow &composite, SteadyMs now)
{
    TopicSet topics;
    const auto isDue = [now](bool pending, const std::optional<SteadyMs> &last, SteadyMs every) {
        return pending && (!last || now >= *last + every);
    };
    const bool list = isDue(m_listPending, m_listPublished, m_cadence.list);
    const bool details = isDue(m_detailsPending, m_detailsPublished, m_cadence.details);
    if (!m_checkTouched && !m_infosTouched && !list && !details)
        return topics;

    auto next = std::make_shared<MarketSnapshot>(*m_snapshot);
    if (m_checkTouched)
        publishCheck(*next, market, topics);
    if (m_infosTouched)
        publishInfos(*next, market, topics);
    if (list) {
        publishList(*next, market, composite, topics);
        m_listPublished = now;
    }
    if (details) {
        publishDetails(*next, market, topics);
        m_detailsPublished = now;
    }
    if (!topics.empty())
        m_snapshot = std::move(next);
    return topics;
}

void Publisher::publishCheck(MarketSnapshot &next, const Market &market, TopicSet &topics)
{
    topics.check = replace(next.check, {market.isOpen(), market.day(), market.session()});
    m_checkTouched = false;
}

void Publisher::publishInfos(MarketSnapshot &next, const Market &market, TopicSet &topics)
{
    auto infos = std::make_shared<MarketSnapshot::Infos>(*next.infos.data);
    for (Row row = 0; row < infos->size(); ++row) {
        const CollectionInfo &info = *(*infos)[row];
        const bool suspended = market.collection(info.id)->suspended;
        if (suspended == info.suspended)
            continue;
        auto changed = std::make_shared<CollectionInfo>(info);
        changed->suspended = suspended;
        (*infos)[row] = std::move(changed);
        auto collection = std::make_shared<CollectionSnapshot>(*next.collections[row]);
        collection->info = (*infos)[row];
        next.collections[row] = std::move(collection);
        topics.brief = true;
    }
    if (topics.brief)
        next.infos = {next.infos.version + 1, std::move(infos)};
    m_infosTouched = false;
}

void Publisher::publishList(MarketSnapshot &next, const Market &market,
                            const CompositeRow &composite, TopicSet &topics)
{
    auto list = std::make_shared<ListSnapshot>(*next.list);
    auto delta = std::make_shared<ListDelta>();
    std::vector<Level> buys;
    std::vector<Level> sells;
    for (Row row = 0; row < list->rows.size(); ++row) {
        if (!m_listTouched[row])
            continue;
        m_listTouched[row] = false;
        const CollectionId id = (*next.infos.data)[row]->id;
        market.levels(id, Side::Buy, 1, buys);
        market.levels(id, Side::Sell, 1, sells);
        const Quote quote = quoteOf(market.collection(id)->day, buys, sells);
        const QuoteFields fields = changedFields(*list->rows[row], quote);
        if (fields.empty())
            continue;
        list->rows[row] = std::make_shared<const Quote>(quote);
        delta->changes.push_back({row, fields});
    }
    if (!delta->changes.empty()) {
        delta->version = ++list->version;
        list->history.push_back(std::move(delta));
        if (list->history.size() > m_cadence.history)
            list->history.erase(list->history.begin());
        next.list = list;
        topics.list = true;
    }
    m_listPending = false;

    CompositeSnapshot row;
    row.quote.latest = traded(composite.last);
    row.quote.previousClose = composite.previousClose;
    row.quote.open = traded(composite.open);
    row.quote.high = traded(composite.high);
    row.quote.low = traded(composite.low);
    Wide volume = 0;
    Wide amount = 0;
    for (const auto &quote : list->rows) {
        volume += quote->volume.value();
        amount += quote->amount.value();
    }
    row.quote.volume = capped<Quantity>(volume);
    row.quote.amount = capped<Fen>(amount);
    row.listed = m_listed;
    topics.composite = replace(next.composite, row);
}

void Publisher::publishDetails(MarketSnapshot &next, const Market &market, TopicSet &topics)
{
    for (Row row = 0; row < next.collections.size(); ++row) {
        if (!m_detailsTouched[row])
            continue;
        m_detailsTouched[row] = false;
        auto collection = std::make_shared<CollectionSnapshot>(*next.collections[row]);
        TopicSet::Collection changed;
        changed.row = row;
        if (!publishDetails(*collection, row, market, changed))
            continue;
        next.collections[row] = std::move(collection);
        topics.collections.push_back(changed);
    }
    m_detailsPending = false;
    m_dealsEnded = false;
}

bool Publisher::publishDetails(CollectionSnapshot &next, Row row, const Market &market,
                               TopicSet::Collection &topics)
{
    const CollectionId id = next.info->id;
    const DayFigures day = market.collection(id)->day;
    std::vector<Level> buys;
    std::vector<Level> sells;
    market.levels(id, Side::Buy, kLevels, buys);
    market.levels(id, Side::Sell, kLevels, sells);

    ItemFigures item;
    item.quote = quoteOf(day, buys, sells);
    item.outer = day.outer;
    item.inner = day.inner;
    item.buyQuantity = sum(buys);
    item.sellQuantity = sum(sells);
    topics.item = replace(next.item, item);

    TradeLevels trade;
    trade.latest = traded(day.last);
    trade.previousClose = day.previousClose;
    trade.lowerLimit = day.lower;
    trade.upperLimit = day.upper;
    trade.buys = priceLevels(buys);
    trade.sells = priceLevels(sells);
    topics.trade = replace(next.trade, std::move(trade));

    LatestDeals &fresh = m_newDeals[row];
    const LatestDeals &before = *next.latest.data;
    if (!fresh.empty() || (m_dealsEnded && !before.empty())) {
        LatestDeals deals;
        const std::size_t kept = m_dealsEnded || fresh.size() >= kLatestDeals
            ? 0
            : std::min(before.size(), kLatestDeals - fresh.size());
        deals.reserve(kLatestDeals);
        deals.insert(deals.end(), before.end() - static_cast<std::ptrdiff_t>(kept), before.end());
        const std::size_t taken = std::min(fresh.size(), kLatestDeals);
        deals.insert(deals.end(), fresh.end() - static_cast<std::ptrdiff_t>(taken), fresh.end());
        fresh.clear();
        next.latest
            = {next.latest.version + 1, std::make_shared<const LatestDeals>(std::move(deals))};
        topics.latest = true;
    }
    return topics.item || topics.trade || topics.latest;
}

} // namespace zvx
