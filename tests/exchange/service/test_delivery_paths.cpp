#include "exchange/accounts/parcel_book.h"
#include "exchange/service/carrier_gateway.h"
#include "exchange/service/embedded_carrier.h"
#include "exchange/service/key_text.h"

#include "exchange/service/account_fixture.h"
#include "exchange/service/program.h"
#include "exchange/service/trading_fixture.h"
#include "exchange/service/until.h"

#include <csignal>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::outcome;
using zvxtest::RawClient;
using zvxtest::until;

constexpr std::chrono::milliseconds patience = 60s;

/// A carrier that speaks when the test does. From any thread.
class PlainCarrier : public CarrierGateway
{
public:
    void ask(const CarrierOrder &order, Answered answered) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_orders.push_back(order);
        m_answers[keyText(order.id)] = std::move(answered);
    }
    void goAhead(ParcelId id) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_letGo.push_back(keyText(id));
    }
    void giveUp(ParcelId id) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_givenUp.push_back(keyText(id));
    }

    void say(const std::string &id, DeliveryStage stage)
    {
        Answered answered;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            answered = m_answers.at(id);
        }
        answered({stage, stage == DeliveryStage::Sent ? Tracking{"车行", "T-1"} : Tracking{}});
    }
    std::vector<CarrierOrder> orders() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_orders;
    }
    /// Those that nobody can take back any more.
    std::vector<std::string> letGo() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_letGo;
    }
    std::vector<std::string> givenUp() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_givenUp;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<CarrierOrder> m_orders;
    std::vector<std::string> m_letGo;
    std::vector<std::string> m_givenUp;
    std::map<std::string, Answered> m_answers;
};

/// What clients ask of a market's goods. Who asks stands in the token.
class DeliveryPathsTest : public zvxtest::TradingTest
{
protected:
    DeliveryPathsTest() { options.carrier = carrier; }

    static std::string form(std::int64_t quantity, const std::string &person = "林晓月",
                            const std::string &phone = "13900000001",
                            const std::string &address = "和平路1号")
    {
        return "collection=2100&quantity=" + std::to_string(quantity) + "&person=" + person
            + "&phone=" + phone + "&address=" + address;
    }
    json act(const std::string &fields, std::int64_t account)
    {
        return post("trade/take.html", "key=" + newKey() + '&' + fields, account);
    }
    json under(const std::string &key, const std::string &fields, std::int64_t account) const
    {
        return post("trade/take.html", "key=" + key + '&' + fields, account);
    }
    json take(std::int64_t account, std::int64_t quantity) { return act(form(quantity), account); }
    json cancel(std::int64_t account, const std::string &id)
    {
        return act("cancel=" + id, account);
    }
    /// The id of a request that is expected to be taken.
    static std::string taken(const json &answer)
    {
        EXPECT_EQ(outcome(answer), "ok") << answer;
        return answer.value("/data/id"_json_pointer, std::string());
    }
    json takes(std::int64_t account, const std::string &query = {}) const
    {
        return get("myaccount/take-list.html" + query, account)["data"]["takes"];
    }
    json shown(std::int64_t account, const std::string &id) const
    {
        return get("myaccount/take.html?take=" + id, account);
    }
    void comesTo(std::int64_t account, const std::string &id, int state)
    {
        EXPECT_TRUE(until([&] { return shown(account, id)["data"]["state"] == state; }, patience))
            << shown(account, id) << " instead of state " << state;
    }
    /// "quantity/sellable" of 2100, which the two paths tell alike.
    std::string pieces(std::int64_t account) const
    {
        const json items = cap(account)["items"];
        EXPECT_EQ(get("myaccount/hold.html", account)["data"]["items"], items);
        return items.empty() ? "none"
                             : items[0]["quantity"].dump() + '/' + items[0]["sellable"].dump();
    }

    const std::shared_ptr<PlainCarrier> carrier = std::make_shared<PlainCarrier>();
};

TEST_F(DeliveryPathsTest, FollowGoodsFromTheRequestToTheSending)
{
    begin();
    fund(1, 0, 10);
    const json answer = take(1, 3);
    const std::string id = taken(answer);
    EXPECT_EQ(answer["data"], (json{{"id", id}}));
    EXPECT_EQ(id.size(), 32u);
    EXPECT_EQ(id.find_first_not_of("0123456789abcdef"), std::string::npos) << id;
    const json first = takes(1);
    ASSERT_EQ(first.size(), 1u);
    json wanted = {{"id", id},
                   {"number", "1"},
                   {"time", first[0]["time"]},
                   {"collection", "2100"},
                   {"code", "211001"},
                   {"name", "青石桥大版"},
                   {"quantity", 3},
                   {"state", 2},
                   {"person", "林晓月"},
                   {"phone", "13900000001"},
                   {"address", "和平路1号"},
                   {"carrier", ""},
                   {"tracking", ""},
                   {"sent", nullptr}};
    EXPECT_EQ(first[0], wanted);
    EXPECT_GT(first[0]["time"].get<std::int64_t>(), 1'500'000'000'000);
    EXPECT_EQ(shown(1, id)["data"], wanted);

    // The pieces are the account's, and cannot be sold meanwhile.
    EXPECT_EQ(pieces(1), "10/7");
    EXPECT_EQ(outcome(sell(1, 1000, 8)), "refused holdings");
    EXPECT_EQ(outcome(sell(1, 1000, 7)), "ok");
    EXPECT_EQ(outcome(take(1, 1)), "refused holdings");
    ASSERT_EQ(carrier->orders().size(), 1u);
    EXPECT_EQ(carrier->orders()[0].goods, "青石桥大版");

    carrier->say(id, DeliveryStage::Preparing);
    comesTo(1, id, 3);
    EXPECT_EQ(outcome(cancel(1, id)), "refused delivery-done");
    EXPECT_EQ(pieces(1), "10/0");
    EXPECT_TRUE(until([&] { return carrier->letGo() == std::vector<std::string>{id}; }, patience));
    carrier->say(id, DeliveryStage::Sent);
    comesTo(1, id, 4);
    const json sent = takes(1)[0];
    wanted["state"] = 4;
    wanted["carrier"] = "车行";
    wanted["tracking"] = "T-1";
    wanted["sent"] = sent["sent"];
    EXPECT_EQ(sent, wanted);
    EXPECT_GE(sent["sent"].get<std::int64_t>(), sent["time"].get<std::int64_t>());
    EXPECT_EQ(pieces(1), "7/0");
    EXPECT_EQ(outcome(cancel(1, id)), "refused delivery-done");
    EXPECT_TRUE(carrier->givenUp().empty());
}

TEST_F(DeliveryPathsTest, WhatIsCancelledOrRefusedCanBeSoldAgain)
{
    begin();
    fund(1, 0, 10);
    const std::string cancelled = taken(take(1, 3));
    const std::string refused = taken(take(1, 7));
    EXPECT_EQ(pieces(1), "10/0");
    const json answer = cancel(1, cancelled);
    EXPECT_EQ(outcome(answer), "ok");
    EXPECT_EQ(answer["data"], json::object());
    EXPECT_EQ(shown(1, cancelled)["data"]["state"], 1);
    EXPECT_EQ(pieces(1), "10/3");
    EXPECT_EQ(carrier->givenUp(), std::vector<std::string>{cancelled});
    EXPECT_EQ(outcome(cancel(1, cancelled)), "refused delivery-done") << "under another key";
    carrier->say(refused, DeliveryStage::Refused);
    comesTo(1, refused, 5);
    EXPECT_EQ(shown(1, refused)["data"]["sent"], nullptr);
    EXPECT_EQ(pieces(1), "10/10");
    EXPECT_EQ(outcome(sell(1, 1000, 10)), "ok");
    // What a carrier says of a parcel that came back is said too late.
    carrier->say(cancelled, DeliveryStage::Sent);
    EXPECT_EQ(outcome(revoke(1, "1")), "ok");
    EXPECT_EQ(shown(1, cancelled)["data"]["state"], 1);
    EXPECT_EQ(pieces(1), "10/10");
}

TEST_F(DeliveryPathsTest, RulesRefuseInWords)
{
    begin();
    fund(1, 0, 10);
    fund(2, 0, 10);
    carryOut({FreezeAccount{AccountId(2), true}});
    const struct {
        const char *what;
        std::int64_t account;
        std::string form;
        const char *outcome;
    } table[] = {
        {"more than there are", 1, form(11), "refused holdings"},
        {"far more", 1, form(9'000'000'000'000'000), "refused quantity"},
        {"another collection", 1, "collection=2101&" + form(1).substr(16), "refused holdings"},
        {"an unknown one", 1, "collection=9999&" + form(1).substr(16),
         "refused unknown-collection"},
        {"a composite row", 1, "collection=-1&" + form(1).substr(16), "refused unknown-collection"},
        {"a frozen account", 2, form(1), "refused frozen"},
        {"one that never was here", 7, form(1), "refused holdings"},
    };
    for (const auto &row : table) {
        const json answer = act(row.form, row.account);
        EXPECT_EQ(outcome(answer), row.outcome) << row.what;
        const std::string message = answer["message"];
        EXPECT_GT(static_cast<unsigned char>(message.front()), 0x7f) << message;
        EXPECT_FALSE(answer.contains("data")) << row.what;
    }
    EXPECT_EQ(takes(1), json::array());
    EXPECT_TRUE(carrier->orders().empty());
    EXPECT_TRUE(floor->parcels().parcelsOf("/lc/youbika/").empty())
        << "nobody is kept in mind for nothing";
    EXPECT_EQ(pieces(1), "10/10");

    // Neither a closed market nor a suspended collection stands in the way of one's own goods.
    carryOut({SetPhase{false}, SuspendCollection{CollectionId(2100), true}});
    const std::string id = taken(take(1, 1));
    EXPECT_EQ(outcome(cancel(1, id)), "ok");
}

TEST_F(DeliveryPathsTest, FieldsThatAreWrongAreNamed)
{
    begin();
    fund(1, 0, 100);
    const auto repeated = [](const std::string &text, int count) {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += text;
        return all;
    };
    const std::string phone = "13900000001";
    const std::string home = "和平路1号";
    const struct {
        std::string form;
        const char *field;
    } table[] = {
        {"", "collection"},
        {"collection=&quantity=1&person=a&phone=12345&address=b", "collection"},
        {"collection=abc&quantity=1&person=a&phone=12345&address=b", "collection"},
        {"collection=2100&person=a&phone=12345&address=b", "quantity"},
        {form(0), "quantity"},
        {form(-1), "quantity"},
        {form(9'000'000'000'000'001), "quantity"},
        {"collection=2100&quantity=1.5&person=a&phone=12345&address=b", "quantity"},
        {"collection=2100&quantity=1&phone=12345&address=b", "person"},
        {form(1, ""), "person"},
        {form(1, "%20%E3%80%80%20"), "person"},
        {form(1, repeated("林", 41)), "person"},
        {form(1, "a%0Ab"), "person"},
        {form(1, "a%09b"), "person"},
        {form(1, "a%7Fb"), "person"},
        {form(1, "a\u0085b"), "person"},
        {form(1, "a\u202eb"), "person"},
        {form(1, "林晓月", ""), "phone"},
        {form(1, "林晓月", "1234"), "phone"},
        {form(1, "林晓月", "+------------"), "phone"},
        {form(1, "林晓月", "123456789012345678901"), "phone"},
        {form(1, "林晓月", "1390000000a"), "phone"},
        {form(1, "林晓月", "１３９００００００００"), "phone"},
        {form(1, "林晓月", phone, ""), "address"},
        {form(1, "林晓月", phone, repeated("路", 201)), "address"},
        {form(1, "林晓月", phone, "a\u2028b"), "address"},
        {"cancel=", "cancel"},
        {"cancel=x", "cancel"},
        {"cancel=00000000000000000000000000000000", "cancel"},
        {"cancel=ABCDEF00000000000000000000000000", "cancel"},
    };
    for (const auto &row : table) {
        const json answer = act(row.form, 1);
        EXPECT_EQ(outcome(answer), std::string("bad-request ") + row.field) << row.form;
        EXPECT_FALSE(answer["message"].get<std::string>().empty());
    }
    EXPECT_EQ(outcome(post("trade/take.html", form(1), 1)), "bad-request key");
    EXPECT_EQ(outcome(act("protocol=2&" + form(1), 1)), "protocol");
    EXPECT_EQ(takes(1), json::array());
    EXPECT_TRUE(carrier->orders().empty());

    const struct {
        std::string person;
        std::string phone;
        std::string address;
        Recipient kept;
    } good[] = {
        {repeated("林", 40),
         "1|312345678",
         repeated("路", 200),
         {repeated("林", 40), "1|312345678", repeated("路", 200)}},
        {repeated("𠮷", 40),
         "%2B86 139-0000",
         " %E3%80%80b c+",
         {repeated("𠮷", 40), "+86 139-0000", "b c"}},
        {"　O'Brien \"x\" ", " 12345 ", "<b>&amp;", {"O'Brien \"x\"", "12345", "<b>"}},
    };
    for (const auto &row : good) {
        const std::string id = taken(act(form(1, row.person, row.phone, row.address), 1));
        const json told = shown(1, id)["data"];
        EXPECT_EQ(told["person"], row.kept.person);
        EXPECT_EQ(told["phone"], row.kept.phone);
        EXPECT_EQ(told["address"], row.kept.address);
        EXPECT_EQ(carrier->orders().back().recipient.address, row.kept.address);
    }
}

TEST_F(DeliveryPathsTest, OneKeyActsOnce)
{
    begin();
    fund(1, 0, 10);
    const std::string key = newKey();
    const json first = under(key, form(3), 1);
    const std::string id = taken(first);
    const auto resolve = [this](const std::string &path, const std::string &of) {
        return post(path, "key=" + of + "&resolve=1", 1);
    };
    EXPECT_EQ(under(key, form(3), 1), first);
    EXPECT_EQ(resolve("trade/take.html", key), first);
    EXPECT_EQ(outcome(under(key, form(4), 1)), "refused key-differs");
    EXPECT_EQ(outcome(under(key, form(3, "林晓阳"), 1)), "refused key-differs")
        << "goods for somebody else";
    EXPECT_EQ(outcome(under(key, "cancel=" + id, 1)), "refused key-differs");
    EXPECT_EQ(outcome(resolve("trade/buy.html", key)), "refused key-differs");
    EXPECT_EQ(outcome(post("trade/sell.html", zvxtest::orderForm(key, 1000, 3), 1)),
              "refused key-differs");
    EXPECT_EQ(pieces(1), "10/7");

    const std::string order = newKey();
    EXPECT_EQ(outcome(post("trade/sell.html", zvxtest::orderForm(order, 1000, 1), 1)), "ok");
    EXPECT_EQ(outcome(under(order, form(1), 1)), "refused key-differs");
    EXPECT_EQ(outcome(resolve("trade/take.html", order)), "refused key-differs");

    const std::string paid = newKey();
    BeginTransfer transfer;
    transfer.account = AccountId(1);
    transfer.amount = Fen(100);
    transfer.bank = {1, 1};
    transfer.key = *ActionKey::fromText(paid);
    carryOut({transfer});
    EXPECT_EQ(outcome(resolve("trade/take.html", paid)), "refused key-differs");

    const std::string burnt = newKey();
    EXPECT_EQ(outcome(resolve("trade/take.html", burnt)), "refused unknown-key");
    EXPECT_EQ(outcome(under(burnt, form(1), 1)), "refused unknown-key");
    const std::string poor = newKey();
    EXPECT_EQ(outcome(under(poor, form(100), 1)), "refused holdings");
    EXPECT_EQ(outcome(resolve("trade/take.html", poor)), "refused holdings");

    const std::string back = newKey();
    const json cancelled = under(back, "cancel=" + id, 1);
    EXPECT_EQ(outcome(cancelled), "ok");
    EXPECT_EQ(under(back, "cancel=" + id, 1), cancelled);
    EXPECT_EQ(resolve("trade/take.html", back), cancelled);
    EXPECT_EQ(outcome(under(back, form(1), 1)), "refused key-differs");
    EXPECT_EQ(takes(1).size(), 1u);
    EXPECT_EQ(pieces(1), "10/9");
    EXPECT_EQ(carrier->orders().size(), 1u);
}

TEST_F(DeliveryPathsTest, ARestartForgetsNothing)
{
    begin();
    fund(1, 0, 10);
    const std::string key = newKey();
    const std::string id = taken(under(key, form(3), 1));
    const std::string gone = taken(take(1, 2));
    carrier->say(gone, DeliveryStage::Sent);
    comesTo(1, gone, 4);
    const json before = takes(1);
    restart();
    EXPECT_EQ(takes(1), before);
    EXPECT_EQ(pieces(1), "8/5");
    ASSERT_EQ(carrier->orders().size(), 3u) << "what is under way is asked for again";
    EXPECT_EQ(keyText(carrier->orders()[2].id), id);
    EXPECT_EQ(carrier->orders()[2].recipient.person, "林晓月");
    EXPECT_EQ(taken(under(key, form(3), 1)), id);
    // The market itself forgets keys after two sessions.
    for (int i = 0; i < 3; ++i)
        floor->exchange().settle();
    EXPECT_EQ(taken(under(key, form(3), 1)), id);
    EXPECT_EQ(taken(under(key, "resolve=1", 1)), id);
    EXPECT_EQ(takes(1), before) << "no settlement ends a request";
    EXPECT_EQ(outcome(cancel(1, id)), "ok");
    EXPECT_EQ(pieces(1), "8/8");
}

TEST_F(DeliveryPathsTest, GoodsOfOthersAreNotThere)
{
    begin();
    fund(1, 0, 10);
    fund(2, 0, 10);
    const std::string id = taken(take(1, 3));
    const std::string nobodys(32, '7');
    EXPECT_EQ(takes(2), json::array());
    EXPECT_EQ(shown(2, id), shown(2, nobodys));
    EXPECT_EQ(outcome(shown(2, id)), "not-found");
    EXPECT_EQ(cancel(2, id), cancel(2, nobodys));
    EXPECT_EQ(outcome(cancel(2, id)), "refused unknown-delivery");
    EXPECT_EQ(shown(1, id)["data"]["state"], 2);
    EXPECT_EQ(pieces(1), "10/7");
    for (const std::string bad : {"", "x", "1", "ABCDEF00000000000000000000000000"})
        EXPECT_EQ(outcome(shown(1, bad)), "bad-request take") << bad;
    EXPECT_EQ(outcome(get("myaccount/take.html", 1)), "bad-request take");
    EXPECT_EQ(outcome(get("myaccount/take.html?protocol=2&take=" + id, 1)), "protocol");
}

TEST_F(DeliveryPathsTest, TheListComesInPages)
{
    begin();
    fund(1, 0, 400);
    fund(2, 0, 300);
    std::vector<std::string> ids;
    for (int i = 0; i < 25; ++i)
        ids.push_back(taken(take(1, i + 1)));
    taken(take(2, 1));
    const auto page = [this](const std::string &query) {
        std::string all;
        for (const json &row : takes(1, query))
            all += row["quantity"].dump() + ' ';
        return all;
    };
    EXPECT_EQ(page(""), "25 24 23 22 21 20 19 18 17 16 ") << "the newest first, ten of them";
    EXPECT_EQ(page("?page=3"), "5 4 3 2 1 ");
    EXPECT_EQ(page("?page=4"), "");
    EXPECT_EQ(page("?page=2147483647"), "");
    EXPECT_EQ(page("?page=2&size=12"), "13 12 11 10 9 8 7 6 5 4 3 2 ");
    EXPECT_EQ(takes(1, "?size=200").size(), 25u);
    for (const char *days : {"?start=2020/01/01&stop=2020/01/01", "?start=2016/01/01&stop=",
                             "?start=&stop=2020/01/01", "?start=2020/01/01&stop=2031/01/01"})
        EXPECT_EQ(takes(1, days).size(), 10u) << days;
    for (const char *days : {"?start=2016/01/01&stop=2019/12/31",
                             "?start=2020/01/02&stop=", "?start=2020/01/02&stop=2020/01/01"})
        EXPECT_EQ(takes(1, days), json::array()) << days;
    const struct {
        const char *query;
        const char *field;
    } wrong[]
        = {{"?page=0", "page"},   {"?page=-1", "page"},           {"?size=0", "size"},
           {"?size=201", "size"}, {"?start=2020-01-01", "start"}, {"?stop=2020/13/01", "stop"}};
    for (const auto &row : wrong)
        EXPECT_EQ(outcome(get(std::string("myaccount/take-list.html") + row.query, 1)),
                  std::string("bad-request ") + row.field);
    EXPECT_EQ(outcome(get("myaccount/take-list.html?protocol=2", 1)), "protocol");
    EXPECT_EQ(takes(3), json::array()) << "who never was in the market";

    // A row whose recipient was taken out stays without one.
    floor->parcels().drop(*ParcelId::fromText(ids.back()));
    const json row = takes(1, "?size=1")[0];
    EXPECT_EQ(row["id"], ids.back());
    EXPECT_EQ(row["quantity"], 25);
    for (const char *field : {"person", "phone", "address", "carrier", "tracking"})
        EXPECT_EQ(row[field], "") << field;
}

TEST_F(DeliveryPathsTest, TooManyUnderWayAreRefused)
{
    begin();
    fund(1, 0, 300);
    std::string first;
    for (std::size_t i = 0; i < Limits().deliveriesOfAccount; ++i) {
        const std::string id = taken(take(1, 1));
        if (i == 0)
            first = id;
    }
    EXPECT_EQ(outcome(take(1, 1)), "refused too-many");
    EXPECT_EQ(outcome(cancel(1, first)), "ok");
    EXPECT_EQ(outcome(take(1, 1)), "ok");
}

TEST_F(DeliveryPathsTest, AFullDeskIsBusyAndAnEndedOneSaysSo)
{
    options.deliveries.queueBound = 2;
    begin();
    fund(1, 0, 10);
    const auto hold = std::make_shared<zvxtest::Hold>();
    holdWriter(hold);
    const auto send = [this](const std::string &key) {
        RawClient client(floor->port());
        const std::uint64_t before = floor->counters().requests;
        client.post("/lc/youbika/trade/take.html", "key=" + key + '&' + form(1), "1");
        EXPECT_TRUE(until([&] { return floor->counters().requests > before; }, patience));
        return client;
    };
    std::vector<RawClient> waiting;
    const std::string key = newKey();
    waiting.push_back(send(key));
    ASSERT_TRUE(until([&] { return floor->market().writer().waiting() == 1; }, patience))
        << "the first one is on its way, the desk's thread waits with it";
    waiting.push_back(send(newKey()));
    waiting.push_back(send(newKey()));
    const std::string late = newKey();
    EXPECT_EQ(outcome(under(late, form(1), 1)), "busy");
    EXPECT_EQ(outcome(under(late, "resolve=1", 1)), "busy");
    hold->release();
    for (RawClient &client : waiting) {
        const auto answer = client.answer(patience);
        ASSERT_TRUE(answer);
        taken(json::parse(answer->body));
    }
    EXPECT_EQ(pieces(1), "10/7") << "what was told busy was not begun";
    EXPECT_EQ(outcome(under(late, form(1), 1)), "ok");
    EXPECT_EQ(floor->deliveries().counters().turnedAway, 2u);

    floor->deliveries().stop();
    const std::string ended = newKey();
    EXPECT_EQ(outcome(under(ended, form(1), 1)), "failed");
    EXPECT_EQ(outcome(under(ended, "resolve=1", 1)), "failed");
    EXPECT_EQ(takes(1).size(), 4u) << "lists are still told";
    restart();
    EXPECT_EQ(outcome(under(ended, "resolve=1", 1)), "refused unknown-key");
}

/// The whole service with its own carrier, and an account that has goods.
class DeliveryServiceTest : public zvxtest::AccountTest
{
protected:
    DeliveryServiceTest()
    {
        options.demo = true;
        options.prepareDelay = 0ms;
        options.shipDelay = 0ms;
    }

    void beginSignedIn()
    {
        begin();
        token = signIn("13800000000", "demo888888");
    }
    std::string state(const std::string &id)
    {
        return get(lc + "myaccount/take.html?take=" + id, token)["data"]["state"].dump();
    }
    std::string take(int quantity)
    {
        const json answer
            = act(lc + "trade/take.html",
                  "collection=2100&quantity=" + std::to_string(quantity) + whom, token);
        EXPECT_EQ(answer["status"], "ok") << answer;
        return answer.value("/data/id"_json_pointer, std::string());
    }
    std::string pieces()
    {
        const json items = get(lc + "myaccount/hold.html", token)["data"]["items"];
        for (const json &item : items)
            if (item["collection"] == "2100")
                return item["quantity"].dump() + '/' + item["sellable"].dump();
        return "none";
    }
    std::string count(const std::string &what) { return metric("zvexchange_" + what); }

    const std::string whom = "&person=林晓月&phone=13911112222&address=和平路1号";
    std::string token;
};

TEST_F(DeliveryServiceTest, NeedsASignInBeforeAllElse)
{
    beginSignedIn();
    EXPECT_EQ(act(lc + "trade/take.html", "quantity=x")["status"], "session");
    EXPECT_EQ(post(lc + "trade/take.html", "nonsense")["status"], "session");
    EXPECT_EQ(get(lc + "myaccount/take.html?take=x")["status"], "session");
    EXPECT_EQ(get(lc + "myaccount/take-list.html?page=0&protocol=7")["status"], "session");
    const std::string id = take(1);
    EXPECT_EQ(act(ch + "trade/take.html", "cancel=" + id, token)["status"], "session")
        << "a token of another platform";
    EXPECT_EQ(act(tea + "trade/take.html", "cancel=" + id, token)["reason"], "unknown-delivery")
        << "another market of the platform";
    EXPECT_EQ(get(tea + "myaccount/take-list.html", token)["data"]["takes"], json::array());
    EXPECT_EQ(get(lc + "trade/take.html", token)["status"], "method");
    EXPECT_EQ(post(lc + "myaccount/take-list.html", "", token)["status"], "method");
}

TEST_F(DeliveryServiceTest, ShipsByItself)
{
    beginSignedIn();
    const std::string id = take(3);
    EXPECT_TRUE(until([&] { return state(id) == "4"; }, patience)) << state(id);
    EXPECT_EQ(pieces(), "97/97");
    const json row = get(lc + "myaccount/take-list.html", token)["data"]["takes"][0];
    EXPECT_EQ(row["carrier"], "自营物流");
    EXPECT_EQ(row["tracking"].get<std::string>().substr(0, 2), "ZY");
    service.reset();

    options.prepareDelay = 1h;
    options.demo = false;
    begin();
    const std::string kept = take(5);
    EXPECT_EQ(state(kept), "2");
    EXPECT_EQ(pieces(), "97/92");
    EXPECT_EQ(count("deliveries_under_way"), "1");
    EXPECT_EQ(act(lc + "trade/take.html", "collection=2100&quantity=93" + whom, token)["reason"],
              "holdings");
    EXPECT_EQ(act(lc + "trade/take.html", "cancel=" + kept, token)["status"], "ok");
    EXPECT_EQ(pieces(), "97/97");
    EXPECT_EQ(count("deliveries_under_way"), "0");
    EXPECT_EQ(count("deliveries_total{step=\"requested\"}"), "1");
    EXPECT_EQ(count("deliveries_total{step=\"cancelled\"}"), "1");
    EXPECT_EQ(count("deliveries_total{step=\"sent\"}"), "0");
    EXPECT_EQ(count("deliveries_refused_total{by=\"rule\"}"), "1");
    EXPECT_EQ(count("deliveries_refused_total{by=\"carrier\"}"), "0");
    service.reset();

    options.prepareDelay = 0ms;
    options.carrierRefuses = true;
    begin();
    const std::string refused = take(2);
    EXPECT_TRUE(until([&] { return state(refused) == "5"; }, patience)) << state(refused);
    EXPECT_EQ(pieces(), "97/97");
    EXPECT_EQ(state(id), "4") << "what was sent stays sent";
    EXPECT_EQ(count("deliveries_refused_total{by=\"carrier\"}"), "1");
}

TEST_F(DeliveryServiceTest, ARestartGoesOnWhereItWas)
{
    options.prepareDelay = 1h;
    beginSignedIn();
    const std::string id = take(3);
    service.reset();
    options.prepareDelay = 0ms;
    options.shipDelay = 1h;
    begin();
    EXPECT_TRUE(until([&] { return state(id) == "3"; }, patience)) << state(id);
    service.reset();
    options.shipDelay = 0ms;
    begin();
    EXPECT_TRUE(until([&] { return state(id) == "4"; }, patience)) << state(id);
    EXPECT_EQ(pieces(), "97/97");
    std::ifstream ledger(folder.path() / EmbeddedCarrier::kFileName);
    std::ostringstream text;
    text << ledger.rdbuf();
    EXPECT_EQ(text.str(), id + " packed\n" + id + " sent\n");
}

/// Where somebody lives is known to the book of parcels and to the outbox, and to nobody else.
TEST(DeliverySecrets, WhereGoodsGoIsWrittenWhereItIsNeededAlone)
{
    namespace fs = std::filesystem;
    const zvxtest::TemporaryFolder folder;
    const fs::path state = folder.path() / "state";
    zvxtest::Program program({"serve", "--state", state.string(), "--catalogue",
                              ZVX_SMALL_CATALOGUE, "--robots", "0", "--demo", "--prepare-delay",
                              "0", "--ship-delay", "0.05"},
                             zvxtest::Program::Nothing);
    const std::uint16_t port = program.port();
    const std::string lc = "/lc/youbika/";
    std::string traces;
    unsigned keys = 0;
    const auto ask
        = [&](const std::string &path, const std::string &fields, const std::string &token) {
              char key[40];
              std::snprintf(key, sizeof key, "%032x", ++keys);
              RawClient client(port);
              client.post(lc + path, std::string("key=") + key + '&' + fields, token);
              const auto answer = client.answer(patience);
              EXPECT_TRUE(answer) << path;
              return answer ? json::parse(answer->body) : json();
          };
    const std::string token
        = ask("login.html", "phone=13800000000&password=demo888888&client=00000000000000aa",
              {})["data"]["token"];
    const std::string whom = "&person=Tiger-Person&phone=13977778888&address=Tiger-Street";
    std::string id;
    for (const std::string &fields :
         {"collection=2100&quantity=2" + whom, "collection=2100&quantity=0" + whom,
          "collection=x&quantity=1" + whom, "collection=2100&quantity=999" + whom,
          "collection=9999&quantity=1" + whom, "collection=2100&quantity=1" + whom + "%zz",
          "collection=2100&quantity=1" + whom + std::string(300, 'x'),
          "collection=2100&quantity=1" + whom + std::string(70'000, 'x'),
          "cancel=Tiger-Person" + whom, "resolve=Tiger-Person" + whom}) {
        const json answer = ask("trade/take.html", fields, token);
        if (answer["status"] == "ok")
            id = answer["data"]["id"];
        traces += answer.dump();
    }
    ASSERT_EQ(id.size(), 32u);
    EXPECT_EQ(ask("trade/take.html", "collection=2100&quantity=1" + whom, {})["status"], "session");
    const auto metrics = [&] { return zvxtest::fetch(port, "/metrics").body; };
    EXPECT_TRUE(until(
        [&] {
            return metrics().find("zvexchange_deliveries_total{step=\"sent\"} 1\n")
                != std::string::npos;
        },
        patience));
    traces += metrics();
    RawClient reader(port);
    reader.get(lc + "myaccount/take.html?take=" + id, token);
    EXPECT_NE(reader.answer(patience)->body.find("Tiger-Street"), std::string::npos);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0) << program.errors;
    traces += program.output + program.errors;
    std::map<std::string, bool> holders;
    for (const auto &entry : fs::directory_iterator(state)) {
        std::ifstream in(entry.path(), std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        const std::string name = entry.path().filename().string();
        for (const char *secret : {"Tiger", "13977778888"})
            if (text.str().find(secret) != std::string::npos)
                holders[name] = true;
        EXPECT_EQ(entry.status().permissions() & (fs::perms::group_all | fs::perms::others_all),
                  fs::perms::none)
            << name;
    }
    EXPECT_EQ(holders,
              (std::map<std::string, bool>{{"outbox.txt", true}, {ParcelBook::kFileName, true}}));
    EXPECT_EQ(traces.find("Tiger"), std::string::npos) << traces;
    EXPECT_EQ(traces.find("13977778888"), std::string::npos) << traces;
}

} // namespace
