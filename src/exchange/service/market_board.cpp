#include "exchange/service/market_board.h"

#include "exchange/service/market_json.h"

#include <algorithm>
#include <iterator>

namespace zvx {

namespace {

bool isOfCollection(Topic topic)
{
    return topic == Topic::Item || topic == Topic::Trade || topic == Topic::Latest;
}

HttpFragment fragment(std::string text)
{
    return std::make_shared<const std::string>(std::move(text));
}

constexpr Topic allTopics[topicCount]
    = {Topic::Market, Topic::Message, Topic::Check, Topic::Composite, Topic::Brief, Topic::Type,
       Topic::List,   Topic::Item,    Topic::Trade, Topic::Latest,    Topic::Cap};

/// Answers to polls that are kept, and from which size on a piece is not copied into them.
constexpr std::size_t mostAnswers = 1024;
constexpr std::size_t longPiece = 2 * 1024;

const HttpFragment &unknownEntry()
{
    static const HttpFragment entry = fragment("\"version\":0,\"unknown\":true");
    return entry;
}

std::string versionText(std::uint64_t version)
{
    return "\"version\":" + std::to_string(version);
}

} // namespace

bool PlatformBoard::put(BoardText &place, std::string data)
{
    const std::string before
        = place.text ? versionText(place.version) + ",\"data\":" : std::string();
    if (place.text && place.text->compare(before.size(), std::string::npos, data) == 0)
        return false;
    ++place.version;
    place.text = fragment(versionText(place.version) + ",\"data\":" + data);
    return true;
}

MarketBoard::MarketBoard(std::shared_ptr<const PlatformBoard> platform, BuildCounters &builds)
    : m_platform(std::move(platform)), m_builds(builds)
{
}

void MarketBoard::publish(std::shared_ptr<const MarketSnapshot> snapshot)
{
    if (m_snapshot && m_snapshot->list->version != snapshot->list->version)
        m_changes.clear();
    m_topics.clear();
    m_snapshot = std::move(snapshot);
    m_collections.resize(m_snapshot->collections.size());
}

std::uint64_t MarketBoard::version(Topic topic, const SyncQuestion &question) const
{
    switch (topic) {
    case Topic::Market:
        return m_platform->market.version;
    case Topic::Message:
        return m_platform->message.version;
    case Topic::Check:
        return m_snapshot->check.version;
    case Topic::Composite:
        return m_snapshot->composite.version;
    case Topic::Brief:
        return m_snapshot->infos.version;
    case Topic::Type:
        return m_snapshot->types.version;
    case Topic::List:
        return m_snapshot->list->version;
    case Topic::Item:
        return m_snapshot->collections[*question.row]->item.version;
    case Topic::Trade:
        return m_snapshot->collections[*question.row]->trade.version;
    case Topic::Latest:
        return m_snapshot->collections[*question.row]->latest.version;
    case Topic::Cap:
        return m_accounts.of(*question.account);
    }
    return 0;
}

bool MarketBoard::isWatched(Topic topic, const SyncQuestion &question) const
{
    return question.held[indexOf(topic)]
        && (!isOfCollection(topic) || question.row || question.unknownCollection)
        && (topic != Topic::Cap || question.account);
}

/// Whether the answer names the topic: it differs, or its collection is not there.
bool MarketBoard::isTold(Topic topic, const SyncQuestion &question) const
{
    return isWatched(topic, question)
        && ((isOfCollection(topic) && !question.row)
            || version(topic, question) != *question.held[indexOf(topic)]);
}

bool MarketBoard::differs(const SyncQuestion &question) const
{
    return std::any_of(std::begin(allTopics), std::end(allTopics),
                       [&](Topic topic) { return isTold(topic, question); });
}

MarketBoard::TopicsKey MarketBoard::keyOf(const SyncQuestion &question) const
{
    TopicsKey key{};
    for (const Topic topic : allTopics) {
        if (!isTold(topic, question))
            continue;
        const bool unknown = isOfCollection(topic) && !question.row;
        key[indexOf(topic)] = unknown ? UINT64_MAX : version(topic, question) + 1;
        if (topic == Topic::List)
            key[topicCount] = *question.held[indexOf(topic)];
        if (isOfCollection(topic))
            key[topicCount + 1] = question.row.value_or(0);
        if (topic == Topic::Latest)
            key[topicCount + 2] = question.limit;
    }
    return key;
}

void MarketBoard::appendTopics(const SyncQuestion &question, std::vector<HttpFragment> &out)
{
    const TopicsKey key = keyOf(question);
    if (key == TopicsKey())
        return;
    auto found = m_topics.find(key);
    if (found == m_topics.end()) {
        // Clients that hold strange versions would otherwise fill it.
        if (m_topics.size() >= mostAnswers)
            m_topics.clear();
        found = m_topics.emplace(key, joinTopics(question)).first;
    }
    out.insert(out.end(), found->second.begin(), found->second.end());
}

/// Few pieces: what is short is copied together, what is long stays shared with other answers.
std::vector<HttpFragment> MarketBoard::joinTopics(const SyncQuestion &question)
{
    std::vector<HttpFragment> pieces;
    std::string joined;
    bool first = true;
    for (const Topic topic : allTopics) {
        if (!isTold(topic, question))
            continue;
        const bool unknown = isOfCollection(topic) && !question.row;
        const HttpFragment told = unknown ? unknownEntry() : entry(topic, question);
        joined.append(first ? "\"" : ",\"").append(topicName(topic)).append("\":{");
        if (told->size() > longPiece) {
            pieces.push_back(fragment(std::move(joined)));
            pieces.push_back(told);
            joined.clear();
        } else {
            joined.append(*told);
        }
        joined.append("}");
        first = false;
    }
    pieces.push_back(fragment(std::move(joined)));
    return pieces;
}

HttpFragment MarketBoard::entry(Topic topic, const SyncQuestion &question)
{
    if (isOfCollection(topic))
        return ofCollection(topic, *question.row, question.limit);
    if (topic == Topic::List)
        return listEntry(*question.held[indexOf(topic)]);
    // The two lists of names are long and hardly ever change, and what an account has is read from
    // the store: who lacks them asks their own path.
    if (topic == Topic::Brief || topic == Topic::Type || topic == Topic::Cap)
        return fragment(versionText(version(topic, question)) + ",\"gap\":true");
    return whole(topic);
}

HttpFragment MarketBoard::listEntry(std::uint64_t base)
{
    HttpFragment &place = m_changes[base];
    if (place)
        return place;
    const ListSnapshot &list = *m_snapshot->list;
    const auto changes = list.changesSince(base);
    if (!changes) {
        place = fragment(versionText(list.version) + ",\"gap\":true");
        // Any number may be asked for; only the ways that exist are worth keeping.
        HttpFragment gap = place;
        m_changes.erase(base);
        return gap;
    }
    JsonText json;
    writeListChanges(json, list, *changes);
    ++m_builds[indexOf(Topic::List)];
    place = fragment(versionText(list.version) + ",\"base\":" + std::to_string(base)
                     + ",\"changes\":" + json.view());
    return place;
}

template <class Write>
HttpFragment MarketBoard::build(Topic topic, std::uint64_t version, const Write &write)
{
    JsonText json;
    json.raw(versionText(version)).key("data");
    write(json);
    ++m_builds[indexOf(topic)];
    return fragment(json.take());
}

HttpFragment MarketBoard::whole(Topic topic)
{
    if (topic == Topic::Market)
        return m_platform->market.text;
    if (topic == Topic::Message)
        return m_platform->message.text;
    const std::uint64_t now = version(topic, {});
    Cached &cached = m_whole[indexOf(topic)];
    if (!cached.text || cached.version != now) {
        const MarketSnapshot &market = *m_snapshot;
        cached.version = now;
        cached.text = build(topic, now, [&](JsonText &json) {
            if (topic == Topic::Check)
                writeCheck(json, *market.check.data);
            else if (topic == Topic::Composite)
                writeComposite(json, *market.composite.data);
            else if (topic == Topic::Brief)
                writeBrief(json, *market.infos.data);
            else if (topic == Topic::Type)
                writeTypes(json, *market.types.data);
            else
                writeList(json, market);
        });
    }
    return cached.text;
}

HttpFragment MarketBoard::ofCollection(Topic topic, Row row, std::size_t limit)
{
    const CollectionSnapshot &now = *m_snapshot->collections[row];
    CachedCollection &cached = m_collections[row];
    if (topic == Topic::Latest) {
        if (cached.latestVersion != now.latest.version) {
            cached.latestVersion = now.latest.version;
            cached.latest.clear();
        }
        HttpFragment &text = cached.latest[limit];
        if (!text) {
            text = build(topic, now.latest.version, [&](JsonText &json) {
                writeLatest(json, *now.info, *now.latest.data, limit);
            });
        }
        return text;
    }
    Cached &place = topic == Topic::Item ? cached.item : cached.trade;
    const std::uint64_t current = topic == Topic::Item ? now.item.version : now.trade.version;
    if (!place.text || place.version != current) {
        place.version = current;
        place.text = build(topic, current, [&](JsonText &json) {
            if (topic == Topic::Item)
                writeItem(json, *now.info, *now.item.data);
            else
                writeTrade(json, *now.info, *now.trade.data);
        });
    }
    return place.text;
}

} // namespace zvx
