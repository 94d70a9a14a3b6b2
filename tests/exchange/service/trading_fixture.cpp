#include "exchange/service/trading_fixture.h"

#include <cstdio>
#include <fstream>
#include <sstream>

namespace zvxtest {

using namespace zvx;
using nlohmann::json;

namespace {

std::string smallCatalogue()
{
    std::ifstream in(ZVX_SMALL_CATALOGUE);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

json bodyOf(RawClient &client)
{
    const auto answer = client.answer(std::chrono::seconds(60));
    if (!answer)
        return json();
    json body = json::parse(answer->body);
    for (int i = 0; i <= static_cast<int>(WireStatus::Failed); ++i) {
        const auto status = static_cast<WireStatus>(i);
        if (wireName(status) == body["status"].get<std::string>()) {
            EXPECT_EQ(answer->status, httpStatus(status)) << body;
        }
    }
    body.erase("time");
    return body;
}

const std::string prefix = "/lc/youbika/";

} // namespace

TradingFloor::TradingFloor(const Options &options)
{
    ExchangeOptions exchange;
    exchange.folder = options.folder;
    exchange.firstCatalogue = smallCatalogue();
    exchange.writer = options.writer;
    exchange.clock = options.clock;
    exchange.accountsChanged
        = [this](const MarketServer &market, const std::vector<AccountId> &accounts) {
              m_server->post([this, &market, accounts] {
                  for (const AccountId account : accounts)
                      m_boards.at(&market)->accounts().raise(account);
              });
          };
    HttpServer::Options listen;
    HttpHandler &self = *this;
    m_server = std::make_unique<HttpServer>(listen, self);
    m_exchange = std::make_unique<Exchange>(std::move(exchange));
    m_envelope = std::make_unique<Envelope>(m_exchange->boot(), [] { return std::int64_t(1); });
    m_answers = std::make_unique<WireAnswers>(*m_envelope);
    m_queries = std::make_unique<QueryPool>(*m_answers, m_log, options.queries);
    m_paths = std::make_unique<TradingPaths>(*m_answers, *m_queries);
    m_records = std::make_unique<RecordPaths>(*m_answers, *m_queries);
    m_charts = std::make_unique<ChartPaths>(*m_answers, *m_queries);
    for (const auto &market : m_exchange->markets()) {
        m_boards[market.get()] = std::make_unique<MarketBoard>(m_platform, m_builds);
        m_boards[market.get()]->publish(market->snapshot());
    }
    if (options.carrier)
        openDeliveries(options);
    m_server->start();
}

void TradingFloor::openDeliveries(const Options &options)
{
    m_parcels = std::make_shared<ParcelBook>(options.folder);
    DeliveryDeskOptions desk;
    for (const auto &market : m_exchange->markets())
        desk.markets.push_back(market.get());
    desk.carrier = options.carrier;
    desk.parcels = m_parcels;
    desk.limits = options.deliveries;
    m_desk = std::make_unique<DeliveryDesk>(std::move(desk));
    m_deliveries = std::make_unique<DeliveryPaths>(*m_answers, *m_queries, *m_desk, *m_parcels);
}

TradingFloor::~TradingFloor()
{
    m_server->stop();
    if (m_desk)
        m_desk->stop();
    m_queries->stop();
    m_exchange->stop();
}

void TradingFloor::handle(HttpRequest request, HttpResponder responder)
{
    const std::size_t end = request.path.find('/', request.path.find('/', 1) + 1) + 1;
    MarketServer *market = m_exchange->market(request.path.substr(0, end));
    const PathEntry *entry = findPath(std::string_view(request.path).substr(end));
    const PathRoom room = roomOf(entry->kind);
    const std::string token = request.authorization;
    PathCall call{entry->kind, *market, *m_boards[market], std::move(request),
                  std::move(responder)};
    if (room == PathRoom::Charts) {
        m_charts->handle(std::move(call));
        return;
    }
    const AccountId account(std::stoll(token.substr(std::string("Bearer ").size())));
    if (room == PathRoom::Records)
        m_records->handle(std::move(call), account);
    else if (room == PathRoom::Deliveries)
        m_deliveries->handle(std::move(call), account);
    else
        m_paths->handle(std::move(call), account);
}

HttpAnswer TradingFloor::refuse(const HttpFault &)
{
    return m_answers->busy();
}

void Hold::pass()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    ++m_visitors;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_open; });
}

void Hold::awaitVisitors(int wanted)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    ASSERT_TRUE(
        m_changed.wait_for(lock, std::chrono::seconds(30), [&] { return m_visitors >= wanted; }));
}

void Hold::release()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_changed.notify_all();
}

TradingTest::TradingTest()
{
    options.folder = folder.path() / "state";
}

json TradingTest::post(const std::string &path, const std::string &form, std::int64_t account) const
{
    RawClient client(floor->port());
    client.post(prefix + path, form, std::to_string(account));
    return bodyOf(client);
}

json TradingTest::get(const std::string &path, std::int64_t account) const
{
    RawClient client(floor->port());
    client.get(prefix + path, std::to_string(account));
    return bodyOf(client);
}

std::string orderForm(const std::string &key, std::int64_t price, std::int64_t quantity)
{
    return "key=" + key + "&collection=2100&price=" + std::to_string(price)
        + "&quantity=" + std::to_string(quantity);
}

json TradingTest::buy(std::int64_t account, std::int64_t price, std::int64_t quantity)
{
    return post("trade/buy.html", orderForm(newKey(), price, quantity), account);
}

json TradingTest::sell(std::int64_t account, std::int64_t price, std::int64_t quantity)
{
    return post("trade/sell.html", orderForm(newKey(), price, quantity), account);
}

std::int64_t TradingTest::placed(const json &answer) const
{
    EXPECT_EQ(answer["status"], "ok") << answer;
    return answer.value("/data/order"_json_pointer, std::int64_t(0));
}

json TradingTest::revoke(std::int64_t account, const std::string &orders)
{
    return post("trade/revoke.html", "key=" + newKey() + "&orders=" + orders, account);
}

std::string TradingTest::newKey()
{
    char text[40];
    std::snprintf(text, sizeof text, "5e%030llx", static_cast<unsigned long long>(++m_keys));
    return text;
}

void TradingTest::carryOut(const std::vector<Command> &commands)
{
    for (const Result &result : floor->market().writer().execute(commands))
        ASSERT_EQ(result.status, Status::Accepted) << name(result.status);
}

void TradingTest::fund(std::int64_t account, std::int64_t fen, std::int64_t pieces)
{
    carryOut({OpenAccount{AccountId(account), kDefaultFee, {}}});
    if (fen > 0)
        carryOut({Deposit{AccountId(account), Fen(fen), {}}});
    if (pieces > 0)
        carryOut({GrantHolding{
            AccountId(account), CollectionId(2100), Quantity(pieces), Fen(1000), {}}});
}

void TradingTest::holdWriter(const std::shared_ptr<Hold> &hold) const
{
    ASSERT_TRUE(
        floor->market().writer().submit(SetPhase{true}, [hold](const Result &) { hold->pass(); }));
    hold->awaitVisitors();
}

std::string outcome(const json &answer)
{
    std::string text = answer.value("status", std::string("none"));
    if (answer.contains("reason"))
        text += ' ' + answer["reason"].get<std::string>();
    return text;
}

} // namespace zvxtest
