#include "exchange/service/service.h"

#include "exchange/accounts/parcel_book.h"
#include "exchange/accounts/password_pool.h"
#include "exchange/service/application_file.h"
#include "exchange/service/card_page.h"
#include "exchange/service/chart_paths.h"
#include "exchange/service/delivery_paths.h"
#include "exchange/service/demo_gifts.h"
#include "exchange/service/embedded_carrier.h"
#include "exchange/service/form_guard.h"
#include "exchange/service/http_server.h"
#include "exchange/service/initials.h"
#include "exchange/service/json_text.h"
#include "exchange/service/market_paths.h"
#include "exchange/service/message_file.h"
#include "exchange/service/metrics_text.h"
#include "exchange/service/money_page.h"
#include "exchange/service/outside_paths.h"
#include "exchange/service/platform_rooms.h"
#include "exchange/service/poll_paths.h"
#include "exchange/service/protocol.h"
#include "exchange/service/public_address.h"
#include "exchange/service/query_pool.h"
#include "exchange/service/record_paths.h"
#include "exchange/service/refusal_log.h"
#include "exchange/service/robots.h"
#include "exchange/service/service_log.h"
#include "exchange/service/service_metrics.h"
#include "exchange/service/trading_paths.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"

#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <new>
#include <stdexcept>
#include <vector>

namespace zvx {

using Steady = std::chrono::steady_clock;

class Service::Impl : public HttpHandler
{
public:
    Impl(ServiceOptions options, ServiceLog &log);
    ~Impl() override { stop(); }

    void handle(HttpRequest request, HttpResponder responder) override;
    HttpAnswer refuse(const HttpFault &fault) override;
    void settle();
    void stop();

    const HttpServer &http() const { return *m_server; }
    /// Known beyond the end, when the exchange itself is gone.
    const std::string &boot() const { return m_envelope->boot(); }

private:
    /// One market with its answers. Stays where it is: polls hold its board's address.
    struct Place {
        MarketServer *market = nullptr;
        AccountRoom *accounts = nullptr; ///< of the platform
        std::unique_ptr<MarketBoard> board;
        std::atomic<bool> stale{false};
        ChangedAccounts changed;
    };
    using Room = std::function<void(Place &, PathCall)>;

    void openExchange();
    void openAccounts();
    LinkTools linkTools(const std::string &platform);
    void giveToDemo();
    void openMoney();
    void openDeliveries();
    void move(const LinkState &link, MoneyDesk::Done done);
    void makeBoards();
    void failed(const std::string &reason);
    void published(const MarketServer &market);
    void refresh(Place &place);
    void accountsChanged(const MarketServer &market, const std::vector<AccountId> &accounts);
    void tellChangedAccounts(Place &place);
    void lookAtFiles();
    void lookAtApplications();
    Place *placeOf(std::string_view path, std::string_view &rest);
    void openRooms();
    template <typename Paths>
    static Room forWhoIsSignedIn(const std::unique_ptr<Paths> &paths);
    std::string metrics() const;

    ServiceOptions m_options;
    ServiceLog &m_log;
    RefusalLog m_refusals;
    const PublicAddress m_address;
    const FormGuard m_guard;
    std::unique_ptr<Initials> m_initials;
    std::unique_ptr<Envelope> m_envelope;
    std::unique_ptr<WireAnswers> m_answers;
    std::unique_ptr<QueryPool> m_queries;
    std::unique_ptr<MarketPaths> m_market;
    std::unique_ptr<ChartPaths> m_charts;
    std::unique_ptr<TradingPaths> m_trading;
    std::unique_ptr<RecordPaths> m_records;
    std::unique_ptr<DeliveryPaths> m_deliveries;
    std::unique_ptr<ApplicationFile> m_applications;
    MessageFile m_messages;
    BuildCounters m_builds{};
    std::optional<DemoGifts> m_demo;
    PlatformRooms m_platforms;
    std::map<std::string, Place, std::less<>> m_places;
    std::unique_ptr<PollPaths> m_polls;
    std::unique_ptr<OutsidePaths> m_outside;
    std::array<Room, pathRoomCount> m_rooms;
    std::atomic<bool> m_serving{false};
    std::atomic<bool> m_failed{false};
    bool m_ending = false; ///< on the server's thread
    bool m_stopped = false;
    // Each of these has threads that use what stands above them.
    std::unique_ptr<HttpServer> m_server;
    AccountRooms m_accounts;
    std::unique_ptr<Exchange> m_exchange;
    std::unique_ptr<MoneyDesk> m_money;
    std::shared_ptr<ParcelBook> m_parcels;
    std::unique_ptr<DeliveryDesk> m_deliveryDesk;
    std::unique_ptr<Robots> m_robots;
};

Service::Impl::Impl(ServiceOptions options, ServiceLog &log)
    : m_options(std::move(options)), m_log(log), m_refusals(log), m_address(m_options.publicUrl),
      m_messages(m_options.folder)
{
    // An address that cannot be had is found out before the folder is touched.
    HttpServer::Options listen;
    listen.address = m_options.address;
    listen.port = m_options.port;
    listen.limits = m_options.limits;
    std::vector<std::string> hostNames = m_options.hostNames;
    if (!m_options.publicUrl.empty())
        hostNames.emplace_back(m_address.host());
    listen.hosts = HostNames(std::move(hostNames));
    m_server = std::make_unique<HttpServer>(listen, *this);
    openExchange();
    const SystemClock clock;
    m_envelope
        = std::make_unique<Envelope>(m_exchange->boot(), [clock] { return clock.wall().value(); });
    m_answers = std::make_unique<WireAnswers>(*m_envelope);
    m_queries = std::make_unique<QueryPool>(*m_answers, m_log);
    m_market = std::make_unique<MarketPaths>(*m_answers);
    m_charts = std::make_unique<ChartPaths>(*m_answers, *m_queries);
    m_trading = std::make_unique<TradingPaths>(*m_answers, *m_queries);
    m_records = std::make_unique<RecordPaths>(*m_answers, *m_queries);
    std::vector<std::string> prefixes;
    for (const auto &market : m_exchange->markets())
        prefixes.push_back(market->prefix());
    m_applications = std::make_unique<ApplicationFile>(m_options.folder, std::move(prefixes));
    lookAtApplications();
    openAccounts();
    giveToDemo();
    openMoney();
    openDeliveries();
    makeBoards();

    m_polls = std::make_unique<PollPaths>(
        *m_answers, m_options.parkedPolls, [this](PollHub::Time time) {
            m_server->callAt(time, [this] { m_polls->hub().expire(Steady::now()); });
        });
    m_outside = std::make_unique<OutsidePaths>(
        *m_answers, *m_market, m_platforms, m_accounts,
        OutsidePaths::Health{[this] { return m_failed.load(); }, [this] { return metrics(); }});
    openRooms();
    m_exchange->announcePort(m_server->port());
    m_serving = true;
    m_robots
        = std::make_unique<Robots>(*m_exchange, m_options.seed, m_options.robotOrdersPerSecond);
    m_server->post([this] {
        for (auto &[prefix, place] : m_places)
            refresh(place);
        lookAtFiles();
    });
    m_server->start();
    m_log.info("serving address=" + m_options.address + " port=" + std::to_string(m_server->port())
               + " boot=" + m_exchange->boot() + " markets=" + std::to_string(m_places.size()));
}

void Service::Impl::openExchange()
{
    m_demo.emplace(m_options.folder);
    if (m_options.demo)
        m_demo->markNewFolder();
    m_initials = std::make_unique<Initials>();
    ExchangeOptions options;
    options.folder = m_options.folder;
    options.initials = [this](std::string_view name) { return m_initials->of(name); };
    options.firstCatalogue = m_options.firstCatalogue;
    options.published
        = [this](const MarketServer &market, const std::shared_ptr<const MarketSnapshot> &,
                 const TopicSet &) { published(market); };
    options.accountsChanged
        = [this](const MarketServer &market, const std::vector<AccountId> &accounts) {
              accountsChanged(market, accounts);
          };
    options.fatal = [this](const std::string &reason) { failed("market failed: " + reason); };
    options.notice = [this](const std::string &line) { m_log.info(line); };
    m_exchange = std::make_unique<Exchange>(std::move(options));
}

void Service::Impl::failed(const std::string &reason)
{
    m_failed = true;
    m_log.error(reason);
    if (m_options.fatal)
        m_options.fatal(reason);
}

void Service::Impl::openAccounts()
{
    std::shared_ptr<PasswordPool> passwords;
    try {
        passwords = std::make_shared<PasswordPool>(m_options.passwordHasher);
    } catch (const std::bad_alloc &) {
        throw std::runtime_error("there is no memory for the hash of a password");
    }
    for (const Platform &platform : m_exchange->platforms()) {
        std::unique_ptr<AccountRoom> &room = m_accounts[platform.id];
        AccountDeskOptions options;
        options.folder = m_options.folder;
        options.platform = platform.id;
        options.platformName = platform.name;
        options.demo = m_options.demo && m_demo->isMarked();
        options.passwords = passwords;
        options.limits = m_options.accountLimits;
        options.sessionsEnded = [this, &room](const std::vector<std::int64_t> &sessions) {
            m_server->post(
                [this, &room, sessions] { m_polls->hub().endSessions(room->gate, sessions); });
        };
        options.fatal = [this, id = platform.id](const std::string &reason) {
            failed("accounts of " + id + " failed: " + reason);
        };
        options.notice
            = [this, id = platform.id](const std::string &line) { m_log.info(id + ": " + line); };
        room = std::make_unique<AccountRoom>(std::move(options), *m_queries, *m_applications,
                                             *m_answers, m_address, linkTools(platform.name));
    }
}

LinkTools Service::Impl::linkTools(const std::string &platform)
{
    const MoveMoney move = [this](const LinkState &link, MoneyDesk::Done done) {
        this->move(link, std::move(done));
    };
    const Fen most = m_options.moneyLimits.ofTransfer;
    return {platform,
            {std::make_unique<CardPage>(), std::make_unique<MoneyPage>(MoneyPage::In, most, move),
             std::make_unique<MoneyPage>(MoneyPage::Out, most, move)},
            m_guard,
            [this](std::string_view prefix) { return m_exchange->market(prefix); }};
}

void Service::Impl::openMoney()
{
    MoneyDeskOptions options;
    for (const auto &market : m_exchange->markets())
        options.markets.push_back(market.get());
    options.bank = m_options.bank;
    const auto notice = [this](const std::string &line) { m_log.info(line); };
    if (!options.bank) {
        EmbeddedBankOptions bank;
        bank.folder = m_options.folder;
        bank.delay = m_options.bankDelay.count();
        bank.refusal = m_options.bankRefusal;
        bank.notice = notice;
        options.bank = std::make_shared<EmbeddedBank>(std::move(bank));
    }
    options.cardOf = [this](const MarketServer &market, AccountId account) {
        return m_accounts.at(market.platform())->desk.cardOf(account);
    };
    options.limits = m_options.moneyLimits;
    options.notice = notice;
    m_money = std::make_unique<MoneyDesk>(std::move(options));
    for (const auto &[id, room] : m_accounts)
        room->money.emplace(room->desk, *m_money, room->gate, *m_queries, *m_answers);
}

void Service::Impl::openDeliveries()
{
    m_parcels = std::make_shared<ParcelBook>(m_options.folder);
    DeliveryDeskOptions options;
    for (const auto &market : m_exchange->markets())
        options.markets.push_back(market.get());
    options.carrier = m_options.carrier;
    options.parcels = m_parcels;
    options.limits = m_options.deliveryLimits;
    options.notice = [this](const std::string &line) { m_log.info(line); };
    options.fatal = [this](const std::string &reason) { failed("deliveries failed: " + reason); };
    if (!options.carrier) {
        EmbeddedCarrierOptions carrier;
        carrier.folder = m_options.folder;
        carrier.prepareDelay = m_options.prepareDelay.count();
        carrier.shipDelay = m_options.shipDelay.count();
        carrier.refuses = m_options.carrierRefuses;
        carrier.notice = options.notice;
        options.carrier = std::make_shared<EmbeddedCarrier>(std::move(carrier));
    }
    m_deliveryDesk = std::make_unique<DeliveryDesk>(std::move(options));
    m_deliveries
        = std::make_unique<DeliveryPaths>(*m_answers, *m_queries, *m_deliveryDesk, *m_parcels);
}

/// Carries out what was confirmed at a one-time link.
void Service::Impl::move(const LinkState &link, MoneyDesk::Done done)
{
    MarketServer *market = m_exchange->market(link.market);
    if (!market) {
        done({MoneyDesk::Status::Refused, "failed", "这个市场已经不在了。"});
        return;
    }
    const auto card = m_accounts.at(market->platform())->desk.cardOf(link.account);
    if (link.purpose == LinkPurpose::MoneyIn)
        m_money->moneyIn(link.account, *market, link.amount, link.key, card, std::move(done));
    else
        m_money->moneyOut(link.account, *market, link.amount, link.key, card, std::move(done));
}

void Service::Impl::giveToDemo()
{
    bool hasDemo = false;
    for (const auto &[id, room] : m_accounts)
        hasDemo = hasDemo || room->desk.isDemo();
    if (hasDemo && !isLoopback(m_options.address))
        throw std::runtime_error("the folder holds a demo account, whose password everybody knows, "
                                 "and is not served on "
                                 + m_options.address + ", only on a loopback address");
    if (!m_options.demo)
        return;
    if (!hasDemo)
        m_log.info("--demo changes nothing: the state folder was not made with it");
    m_demo->give(
        *m_exchange,
        [this](const MarketServer &market) {
            return m_accounts[market.platform()]->desk.demoAccount();
        },
        [this](const std::string &line) { m_log.info(line); });
}

void Service::Impl::makeBoards()
{
    std::string fault;
    m_messages.refresh(fault);
    if (!fault.empty())
        m_log.warn(fault);
    for (const Platform &platform : m_exchange->platforms()) {
        PlatformRoom &room = m_platforms.try_emplace(platform.id, platform.name).first->second;
        JsonText servers;
        servers.open('{').key("servers").open('[');
        for (const MarketServer *market : platform.markets) {
            servers.open('{').key("name").text(market->name());
            servers.key("prefix").text(market->prefix()).close('}');
        }
        PlatformBoard::put(room.board->market, servers.close(']').close('}').take());
        PlatformBoard::put(room.board->message, m_messages.dataOf(platform.id, platform.name));
        for (MarketServer *market : platform.markets) {
            Place &place = m_places[market->prefix()];
            place.market = market;
            place.accounts = m_accounts[platform.id].get();
            place.board = std::make_unique<MarketBoard>(room.board, m_builds);
            place.board->publish(market->snapshot());
        }
    }
}

void Service::Impl::published(const MarketServer &market)
{
    // Before the server stands there is nobody to tell; it begins with the newest of everything.
    if (!m_serving)
        return;
    Place &place = m_places.find(market.prefix())->second;
    if (!place.stale.exchange(true))
        m_server->post([this, &place] { refresh(place); });
}

void Service::Impl::refresh(Place &place)
{
    place.stale = false;
    place.board->publish(place.market->snapshot());
    m_polls->hub().wake(*place.board);
}

void Service::Impl::accountsChanged(const MarketServer &market,
                                    const std::vector<AccountId> &accounts)
{
    // As above: whatever changes before somebody can ask belongs to the first versions.
    if (!m_serving)
        return;
    Place &place = m_places.find(market.prefix())->second;
    if (place.changed.add(accounts))
        m_server->post([this, &place] { tellChangedAccounts(place); });
}

void Service::Impl::tellChangedAccounts(Place &place)
{
    const std::vector<AccountId> accounts = place.changed.take();
    for (const AccountId account : accounts)
        place.board->accounts().raise(account);
    m_polls->hub().wake(*place.board, accounts);
}

void Service::Impl::lookAtApplications()
{
    std::string fault;
    m_applications->refresh(fault);
    if (!fault.empty())
        m_log.warn(fault);
}

void Service::Impl::lookAtFiles()
{
    if (m_ending)
        return;
    std::string fault;
    const bool changed = m_messages.refresh(fault);
    if (!fault.empty())
        m_log.warn(fault);
    if (changed) {
        for (const Platform &platform : m_exchange->platforms())
            PlatformBoard::put(m_platforms.at(platform.id).board->message,
                               m_messages.dataOf(platform.id, platform.name));
        for (auto &[prefix, place] : m_places)
            m_polls->hub().wake(*place.board);
    }
    lookAtApplications();
    m_server->callAt(Steady::now() + m_options.messagesEvery, [this] { lookAtFiles(); });
}

Service::Impl::Place *Service::Impl::placeOf(std::string_view path, std::string_view &rest)
{
    const std::size_t second = path.find('/', 1);
    const std::size_t third
        = second == std::string_view::npos ? second : path.find('/', second + 1);
    if (third == std::string_view::npos)
        return nullptr;
    const auto found = m_places.find(path.substr(0, third + 1));
    if (found == m_places.end())
        return nullptr;
    rest = path.substr(third + 1);
    return &found->second;
}

/// Who answers which room of the contract.
void Service::Impl::openRooms()
{
    const auto room
        = [this](PathRoom which) -> Room & { return m_rooms[static_cast<std::size_t>(which)]; };
    room(PathRoom::Polls) = [this](Place &place, PathCall call) {
        m_polls->handle(std::move(call), place.accounts->gate);
    };
    room(PathRoom::Market) = [this](Place &, PathCall call) { m_market->handle(std::move(call)); };
    room(PathRoom::Charts) = [this](Place &, PathCall call) { m_charts->handle(std::move(call)); };
    room(PathRoom::Applications)
        = [](Place &place, PathCall call) { place.accounts->applications.handle(std::move(call)); };
    room(PathRoom::Accounts)
        = [](Place &place, PathCall call) { place.accounts->paths.handle(std::move(call)); };
    room(PathRoom::Trading) = forWhoIsSignedIn(m_trading);
    room(PathRoom::Records) = forWhoIsSignedIn(m_records);
    room(PathRoom::Money)
        = [](Place &place, PathCall call) { place.accounts->money->handle(std::move(call)); };
    room(PathRoom::Deliveries) = forWhoIsSignedIn(m_deliveries);
    room(PathRoom::Cards)
        = [](Place &place, PathCall call) { place.accounts->cards.handle(std::move(call)); };
}

/// Paths of an account: the token comes before everything else.
template <typename Paths>
Service::Impl::Room Service::Impl::forWhoIsSignedIn(const std::unique_ptr<Paths> &paths)
{
    return [&paths](Place &place, PathCall call) {
        auto asked = place.accounts->gate.ask(call.request);
        if (auto *refusal = std::get_if<HttpAnswer>(&asked))
            call.responder.answer(std::move(*refusal));
        else
            paths->handle(std::move(call), std::get<SignedIn>(asked).account);
    };
}

void Service::Impl::handle(HttpRequest request, HttpResponder responder)
{
    if (m_ending) {
        responder.answer(m_answers->stopping());
        return;
    }
    std::string_view rest;
    Place *place = placeOf(request.path, rest);
    if (!place) {
        m_outside->handle(std::move(request), std::move(responder));
        return;
    }
    const PathEntry *entry = findPath(rest);
    if (!entry) {
        responder.answer(m_answers->notFound());
        return;
    }
    if (request.method != entry->method) {
        responder.answer(m_answers->wrongMethod(entry->method));
        return;
    }
    m_rooms[static_cast<std::size_t>(roomOf(entry->kind))](
        *place,
        {entry->kind, *place->market, *place->board, std::move(request), std::move(responder)});
}

HttpAnswer Service::Impl::refuse(const HttpFault &fault)
{
    m_refusals.note(fault);
    if (fault.status == 413)
        return m_envelope->refusal(WireStatus::TooLarge, "请求过大。");
    if (fault.status == 500)
        return m_envelope->refusal(WireStatus::Failed, "服务没有给出回答，请稍后再试。");
    if (fault.status == 503)
        return m_answers->busy();
    return m_envelope->refusal(WireStatus::BadRequest, "请求格式不正确。");
}

std::string Service::Impl::metrics() const
{
    MetricsText text;
    addHttp(text, m_server->counters());
    text.add("zvexchange_polls_parked", m_polls->hub().parked());
    for (std::size_t i = 0; i < topicCount; ++i)
        text.add("zvexchange_builds_total", m_builds[i], "topic",
                 std::string(topicName(static_cast<Topic>(i))));
    addQueries(text, *m_queries);
    text.add("zvexchange_robot_orders_total", m_robots ? m_robots->orders() : 0);
    for (const auto &[id, room] : m_accounts)
        addAccounts(text, id, room->desk);
    addMoney(text, *m_money);
    addDeliveries(text, *m_deliveryDesk);
    for (const auto &[prefix, place] : m_places)
        addMarket(text, *place.market);
    return text.take();
}

void Service::Impl::settle()
{
    m_exchange->settle();
    m_log.info("settled markets=" + std::to_string(m_places.size()));
}

void Service::Impl::stop()
{
    if (m_stopped)
        return;
    m_stopped = true;
    if (m_robots)
        m_robots->stop();
    if (m_server) {
        m_server->post([this] {
            m_ending = true;
            m_polls->hub().endAll();
        });
        m_server->stop();
    }
    for (const auto &[id, room] : m_accounts)
        room->desk.stop();
    // After the desks, whose last codes may still move money.
    if (m_money)
        m_money->stop();
    if (m_deliveryDesk)
        m_deliveryDesk->stop();
    if (m_queries)
        m_queries->stop();
    // A bank and a carrier of our own take no step any more when another service may have the
    // folder.
    m_money.reset();
    m_deliveryDesk.reset();
    m_parcels.reset();
    if (m_exchange) {
        m_exchange->stop();
        m_log.info("stopped");
    }
    // The writers' last publications still named the server; they are over now.
    m_robots.reset();
    m_exchange.reset();
}

Service::Service(ServiceOptions options, ServiceLog &log)
    : m_impl(std::make_unique<Impl>(std::move(options), log))
{
}

Service::~Service() = default;

std::uint16_t Service::port() const
{
    return m_impl->http().port();
}

const std::string &Service::boot() const
{
    return m_impl->boot();
}

void Service::settle()
{
    m_impl->settle();
}

void Service::stop()
{
    m_impl->stop();
}

} // namespace zvx
