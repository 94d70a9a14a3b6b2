#include "exchange/service/market_board.h"
#include "exchange/service/poll_hub.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace zvx;
using nlohmann::json;

template <class T>
Published<T> published(std::uint64_t version, T data)
{
    return {version, std::make_shared<const T>(std::move(data))};
}

/// Two collections whose list changes by hand.
class Scripted
{
public:
    Scripted()
    {
        for (int row = 0; row < 2; ++row) {
            auto info = std::make_shared<CollectionInfo>();
            info->id = CollectionId(1001 + row);
            info->code = "10000" + std::to_string(row);
            info->name = row == 0 ? "长\"城" : "重阳";
            info->listed = Quantity(500);
            m_infos.push_back(info);
        }
        m_quotes.resize(2);
        commitList({});
    }

    /// Changes row 0's latest price and tells of it in the next list.
    void tick(std::int64_t price)
    {
        m_quotes[0].latest = Fen(price);
        QuoteFields fields;
        fields.add(QuoteField::Latest);
        commitList({{0, fields}});
    }

    std::shared_ptr<const MarketSnapshot> snapshot() const
    {
        auto market = std::make_shared<MarketSnapshot>();
        market->types = published<std::vector<TypeSnapshot>>(1, {{1, "邮票"}});
        market->infos = published<MarketSnapshot::Infos>(1, m_infos);
        market->check = published<CheckSnapshot>(
            session, {true, TradingDay(20200101), Sequence(static_cast<int>(session))});
        market->composite = published<CompositeSnapshot>(m_list->version, {});
        market->list = m_list;
        auto index = std::make_shared<std::vector<std::pair<CollectionId, Row>>>();
        for (Row row = 0; row < 2; ++row) {
            auto collection = std::make_shared<CollectionSnapshot>();
            collection->info = m_infos[row];
            collection->item = published<ItemFigures>(1, {});
            collection->trade = published<TradeLevels>(1, {});
            LatestDeals deals;
            for (int i = 1; i <= 3; ++i)
                deals.push_back({Sequence(i), TimeMs(i), Fen(100 * i), Quantity(1), Side::Sell});
            collection->latest = published<LatestDeals>(1, deals);
            market->collections.push_back(collection);
            index->emplace_back(m_infos[row]->id, row);
        }
        market->index = index;
        return market;
    }

    std::uint64_t session = 1;

private:
    void commitList(std::vector<ListDelta::Change> changes)
    {
        auto list = std::make_shared<ListSnapshot>();
        if (m_list)
            *list = *m_list;
        ++list->version;
        list->rows.clear();
        for (const Quote &quote : m_quotes)
            list->rows.push_back(std::make_shared<const Quote>(quote));
        if (!changes.empty()) {
            auto delta = std::make_shared<ListDelta>();
            delta->version = list->version;
            delta->changes = std::move(changes);
            list->history.push_back(delta);
            if (list->history.size() > 3)
                list->history.erase(list->history.begin());
        }
        m_list = list;
    }

    MarketSnapshot::Infos m_infos;
    std::vector<Quote> m_quotes;
    std::shared_ptr<const ListSnapshot> m_list;
};

class MarketBoardTest : public testing::Test
{
protected:
    MarketBoardTest()
    {
        PlatformBoard::put(platform->market, "{\"servers\":[]}");
        PlatformBoard::put(platform->message, "{\"messages\":[]}");
        board.publish(market.snapshot());
    }

    static SyncQuestion watching(Topic topic, std::uint64_t held)
    {
        SyncQuestion question;
        question.held[indexOf(topic)] = held;
        return question;
    }

    json topics(const SyncQuestion &question)
    {
        std::vector<HttpFragment> parts;
        board.appendTopics(question, parts);
        std::string text = "{";
        for (const HttpFragment &part : parts)
            text += *part;
        return json::parse(text + '}');
    }

    std::shared_ptr<PlatformBoard> platform = std::make_shared<PlatformBoard>();
    BuildCounters builds{};
    Scripted market;
    MarketBoard board{platform, builds};
};

TEST_F(MarketBoardTest, TellsOnlyWhatIsWatchedAndDiffers)
{
    SyncQuestion question = watching(Topic::Check, 1);
    EXPECT_FALSE(board.differs(question));
    EXPECT_EQ(topics(question), json::object());
    question.held[indexOf(Topic::Message)] = 0;
    question.held[indexOf(Topic::Item)] = 0;
    EXPECT_TRUE(board.differs(question));
    EXPECT_EQ(topics(question),
              (json{{"message", {{"version", 1}, {"data", {{"messages", json::array()}}}}}}))
        << "without a collection nothing of one is watched";
    EXPECT_FALSE(board.differs({}));
}

TEST_F(MarketBoardTest, TellsOfACollectionThatIsNotThere)
{
    SyncQuestion question = watching(Topic::Item, 4);
    question.held[indexOf(Topic::Latest)] = 0;
    question.unknownCollection = true;
    const json unknown = {{"version", 0}, {"unknown", true}};
    EXPECT_TRUE(board.differs(question));
    EXPECT_EQ(topics(question), (json{{"item", unknown}, {"latest", unknown}}));
}

TEST_F(MarketBoardTest, AnswersLongListsWithAGap)
{
    SyncQuestion question = watching(Topic::Brief, 0);
    question.held[indexOf(Topic::Type)] = 9;
    EXPECT_EQ(topics(question),
              (json{{"brief", {{"version", 1}, {"gap", true}}},
                    {"type", {{"version", 1}, {"gap", true}}}}));
}

TEST_F(MarketBoardTest, LeadsFromAnEarlierListToTheNewest)
{
    market.tick(1200);
    market.tick(1300);
    board.publish(market.snapshot());
    const json change = json::array({0, {{"latest", 1300}}});
    EXPECT_EQ(topics(watching(Topic::List, 1)),
              (json{{"list", {{"version", 3}, {"base", 1}, {"changes", json::array({change})}}}}));
    EXPECT_EQ(topics(watching(Topic::List, 2))["list"]["base"], 2);
    EXPECT_FALSE(board.differs(watching(Topic::List, 3)));
    for (const std::uint64_t unknown : {0, 4, 1'000'000})
        EXPECT_EQ(topics(watching(Topic::List, unknown)),
                  (json{{"list", {{"version", 3}, {"gap", true}}}}))
            << unknown;
    for (int price = 1400; price <= 1800; price += 100)
        market.tick(price);
    board.publish(market.snapshot());
    EXPECT_EQ(topics(watching(Topic::List, 3)), (json{{"list", {{"version", 8}, {"gap", true}}}}))
        << "too old";
}

TEST_F(MarketBoardTest, MakesEachPieceOncePerChange)
{
    const auto ask = [&](int polls) {
        for (int i = 0; i < polls; ++i) {
            SyncQuestion question = watching(Topic::List, 1);
            question.held[indexOf(Topic::Check)] = 0;
            question.row = 0;
            question.held[indexOf(Topic::Latest)] = 0;
            topics(question);
        }
    };
    market.tick(1200);
    board.publish(market.snapshot());
    ask(1000);
    EXPECT_EQ(builds[indexOf(Topic::List)], 1u);
    EXPECT_EQ(builds[indexOf(Topic::Check)], 1u);
    EXPECT_EQ(builds[indexOf(Topic::Latest)], 1u);
    market.tick(1300);
    board.publish(market.snapshot());
    ask(1000);
    EXPECT_EQ(builds[indexOf(Topic::List)], 2u);
    EXPECT_EQ(builds[indexOf(Topic::Check)], 1u) << "the check did not change";
}

TEST_F(MarketBoardTest, SharesAnAnswerWhereAllOfItIsTheSame)
{
    const auto ask = [&](std::optional<Row> row, std::size_t limit, std::uint64_t list) {
        SyncQuestion question = watching(Topic::List, list);
        question.row = row;
        question.unknownCollection = !row;
        question.limit = limit;
        for (const Topic topic : {Topic::Item, Topic::Latest})
            question.held[indexOf(topic)] = 0;
        return question;
    };
    market.tick(1200);
    market.tick(1300);
    board.publish(market.snapshot());
    std::vector<HttpFragment> first;
    std::vector<HttpFragment> second;
    board.appendTopics(ask(0, 10, 1), first);
    board.appendTopics(ask(0, 10, 1), second);
    EXPECT_EQ(first, second) << "one text for both";

    const json mine = topics(ask(0, 10, 1));
    EXPECT_EQ(mine["item"]["data"]["id"], "1001");
    EXPECT_EQ(mine["latest"]["data"]["deals"].size(), 3u);
    EXPECT_EQ(mine["list"]["base"], 1);
    // Another collection at the same versions, fewer deals, another list, none of a collection.
    EXPECT_EQ(topics(ask(1, 10, 1))["item"]["data"]["id"], "1002");
    EXPECT_EQ(topics(ask(0, 2, 1))["latest"]["data"]["deals"].size(), 2u);
    EXPECT_EQ(topics(ask(0, 10, 2))["list"]["base"], 2);
    EXPECT_EQ(topics(ask(std::nullopt, 10, 1))["item"]["unknown"], true);
    EXPECT_EQ(topics(ask(0, 10, 1)), mine);
}

TEST_F(MarketBoardTest, GivesTheLastDealsOldestFirst)
{
    const auto deals = [&](std::size_t limit) {
        const json data
            = json::parse('{' + *board.ofCollection(Topic::Latest, 1, limit) + '}')["data"];
        std::vector<int> sequences;
        for (const json &deal : data["deals"])
            sequences.push_back(deal["sequence"]);
        EXPECT_EQ(data["id"], "1002");
        return sequences;
    };
    EXPECT_EQ(deals(0), std::vector<int>{});
    EXPECT_EQ(deals(2), (std::vector<int>{2, 3}));
    EXPECT_EQ(deals(200), (std::vector<int>{1, 2, 3}));
}

TEST_F(MarketBoardTest, CountsAPlatformTextUpOnlyWhenItChanges)
{
    EXPECT_FALSE(PlatformBoard::put(platform->message, "{\"messages\":[]}"));
    EXPECT_EQ(platform->message.version, 1u);
    EXPECT_TRUE(PlatformBoard::put(platform->message, "{\"messages\":[1]}"));
    EXPECT_EQ(topics(watching(Topic::Message, 1))["message"]["version"], 2);
}

/// Keeps what a poll was answered.
class Kept : public HttpResponseSink
{
public:
    void answer(HttpAnswer answer) override { answers.push_back(std::move(answer)); }
    void watch(std::function<void()> watcher) override { gone = std::move(watcher); }
    void lose() override { lost = true; }

    std::vector<HttpAnswer> answers;
    std::function<void()> gone;
    bool lost = false;
};

TEST_F(MarketBoardTest, ParkedPollsAreToldOnceWhateverEndsThem)
{
    const PollHub::Time start{};
    std::vector<PollHub::Time> alarms;
    PollHub hub(
        4, [](MarketBoard &, const SyncQuestion &) { return HttpAnswer(); },
        [&](PollHub::Time time) { alarms.push_back(time); });
    std::vector<std::shared_ptr<Kept>> clients;
    for (int i = 0; i < 4; ++i) {
        clients.push_back(std::make_shared<Kept>());
        hub.park(board, watching(i == 0 ? Topic::List : Topic::Check, 1),
                 HttpResponder(clients.back()), start + std::chrono::seconds(10 - i));
    }
    EXPECT_TRUE(hub.isFull());
    EXPECT_EQ(alarms.size(), 4u) << "each was due before all others";

    market.tick(1200);
    board.publish(market.snapshot());
    hub.wake(board);
    EXPECT_EQ(clients[0]->answers.size(), 1u);
    EXPECT_EQ(hub.parked(), 3u) << "only the list changed";

    clients[1]->gone();
    EXPECT_EQ(hub.parked(), 2u);
    EXPECT_TRUE(clients[1]->answers.empty());

    hub.expire(start + std::chrono::seconds(7));
    EXPECT_EQ(clients[3]->answers.size(), 1u);
    EXPECT_EQ(clients[2]->answers.size(), 0u);

    hub.endAll();
    EXPECT_EQ(clients[2]->answers.size(), 1u);
    EXPECT_EQ(hub.parked(), 0u);
    hub.expire(start + std::chrono::seconds(60));
    clients[0]->gone();
    for (const auto &client : clients)
        EXPECT_LE(client->answers.size(), 1u);
}

} // namespace
