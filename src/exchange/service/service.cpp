#include "exchange/service/service.h"

#include "exchange/accounts/account_desk.h"
#include "exchange/accounts/password_pool.h"
#include "exchange/service/account_paths.h"
#include "exchange/service/application_file.h"
#include "exchange/service/application_paths.h"
#include "exchange/service/bank_pictures.h"
#include "exchange/service/card_page.h"
#include "exchange/service/card_paths.h"
#include "exchange/service/chart_paths.h"
#include "exchange/service/demo_gifts.h"
#include "exchange/service/form_guard.h"
#include "exchange/service/http_server.h"
#include "exchange/service/initials.h"
#include "exchange/service/json_text.h"
#include "exchange/service/link_pages.h"
#include "exchange/service/market_board.h"
#include "exchange/service/message_file.h"
#include "exchange/service/metrics_text.h"
#include "exchange/service/money_page.h"
#include "exchange/service/money_paths.h"
#include "exchange/service/parameters.h"
#include "exchange/service/platform_pages.h"
#include "exchange/service/poll_hub.h"
#include "exchange/service/protocol.h"
#include "exchange/service/public_address.h"
#include "exchange/service/query_pool.h"
#include "exchange/service/refusal_log.h"
#include "exchange/service/robots.h"
#include "exchange/service/service_log.h"
#include "exchange/service/session_gate.h"
#include "exchange/service/trading_paths.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"

#include <atomic>
#include <map>
#include <new>
#include <stdexcept>
#include <vector>

namespace zvx {

namespace {

using Steady = std::chrono::steady_clock;

/// What a client is told of its own releases.
constexpr std::string_view newestClient = ZVX_VERSION;
constexpr std::string_view oldestClient = "0.1.0";

constexpr std::int64_t longestWait = 25'000;
constexpr std::int64_t mostDeals = 200;
constexpr std::int64_t usualDeals = 10;

/// What browsers may do with pages and pictures.
constexpr std::string_view readingMethods = "GET, HEAD";

bool isReading(const HttpRequest &request)
{
    return request.method == "GET" || request.method == "HEAD";
}

HttpFragment fragment(std::string text)
{
    return std::make_shared<const std::string>(std::move(text));
}

/// The accounts of one platform, and who asks for them.
struct AccountRoom {
    AccountRoom(AccountDeskOptions options, QueryPool &queries,
                const ApplicationFile &applicationFile, const WireAnswers &answers,
                const PublicAddress &address, LinkTools links)
        : desk(std::move(options)),
          gate([this](std::string_view token) { return desk.session(token); }, answers),
          paths(desk, gate, queries, answers), applications(desk, gate, applicationFile, answers),
          cards(desk, gate, address, answers), pages(desk, std::move(links))
    {
    }

    AccountDesk desk;
    SessionGate gate;
    AccountPaths paths;
    ApplicationPaths applications;
    CardPaths cards;
    LinkPages pages;
    std::optional<MoneyPaths> money; ///< as soon as money can be moved
};

/// What a platform has outside of its markets.
struct PlatformRoom {
    explicit PlatformRoom(const Platform &platform)
        : board(std::make_shared<PlatformBoard>()), pages(platform.name)
    {
    }

    std::shared_ptr<PlatformBoard> board;
    PlatformPages pages;
};

void addAccounts(MetricsText &text, const std::string &platform, const AccountDesk &desk)
{
    const auto add = [&](std::string_view name, std::uint64_t value) {
        text.add(name, value, "platform", platform);
    };
    const AccountCounters &counters = desk.counters();
    add("zvexchange_account_requests_total", counters.requests);
    add("zvexchange_account_requests_turned_away_total", counters.turnedAway);
    add("zvexchange_account_commits_total", counters.commits);
    add("zvexchange_account_queue_depth", desk.waiting());
    add("zvexchange_sessions_live", desk.liveSessions());
    add("zvexchange_sign_ins_total", counters.signIns);
    add("zvexchange_wrong_passwords_total", counters.wrongPasswords);
    add("zvexchange_wrong_codes_total", counters.wrongCodes);
    add("zvexchange_limited_requests_total", counters.refusedByLimit);
    add("zvexchange_text_messages_total", counters.texts);
    add("zvexchange_text_messages_failed_total", counters.textsFailed);
}

void addMoney(MetricsText &text, const MoneyDesk &desk)
{
    const MoneyCounters &counters = desk.counters();
    text.add("zvexchange_transfers_total", counters.moneyIn, "way", "in");
    text.add("zvexchange_transfers_total", counters.moneyOut, "way", "out");
    text.add("zvexchange_transfers_refused_total", counters.refused, "by", "rule");
    text.add("zvexchange_transfers_refused_total", counters.refusedByBank, "by", "bank");
    text.add("zvexchange_transfers_turned_away_total", counters.turnedAway);
    text.add("zvexchange_transfers_under_way", desk.underWay());
    text.add("zvexchange_bank_questions_total", counters.asked);
    text.add("zvexchange_bank_questions_repeated_total", counters.askedAgain);
    text.add("zvexchange_bank_idle_answers_total", counters.idleAnswers);
}

} // namespace

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

    void openExchange();
    void openAccounts();
    LinkTools linkTools(const std::string &platform);
    void giveToDemo();
    void openMoney();
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

    void answerOutside(HttpRequest request, HttpResponder responder);
    HttpAnswer answerRoot(const HttpRequest &request);
    HttpAnswer answerQrCode(const HttpRequest &request) const;
    HttpAnswer answerPlatform(std::string_view id, std::string_view rest,
                              const HttpRequest &request);
    HttpAnswer query(Place &place, PathKind kind, const HttpParameters &parameters);
    HttpAnswer queryOfCollection(Place &place, PathKind kind, ParameterReader &read);
    void trade(PathCall call, const SessionGate &gate);
    void sync(Place &place, const HttpRequest &request, HttpResponder responder);
    HttpAnswer syncAnswer(MarketBoard &board, const SyncQuestion &question) const;
    HttpAnswer update() const;
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
    std::unique_ptr<TradingPaths> m_trading;
    std::unique_ptr<ChartPaths> m_charts;
    std::unique_ptr<ApplicationFile> m_applications;
    MessageFile m_messages;
    BuildCounters m_builds{};
    std::optional<DemoGifts> m_demo;
    std::map<std::string, PlatformRoom, std::less<>> m_platforms;
    std::map<std::string, Place, std::less<>> m_places;
    std::unique_ptr<PollHub> m_polls;
    std::atomic<bool> m_serving{false};
    std::atomic<bool> m_failed{false};
    bool m_ending = false; ///< on the server's thread
    bool m_stopped = false;
    // Each of these has threads that use what stands above them.
    std::unique_ptr<HttpServer> m_server;
    std::map<std::string, std::unique_ptr<AccountRoom>, std::less<>> m_accounts; ///< by platform
    std::unique_ptr<Exchange> m_exchange;
    std::unique_ptr<MoneyDesk> m_money;
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
    m_trading = std::make_unique<TradingPaths>(*m_answers, *m_queries);
    m_charts = std::make_unique<ChartPaths>(*m_answers, *m_queries);
    std::vector<std::string> prefixes;
    for (const auto &market : m_exchange->markets())
        prefixes.push_back(market->prefix());
    m_applications = std::make_unique<ApplicationFile>(m_options.folder, std::move(prefixes));
    lookAtApplications();
    openAccounts();
    giveToDemo();
    openMoney();
    makeBoards();

    m_polls = std::make_unique<PollHub>(
        m_options.parkedPolls,
        [this](MarketBoard &board, const SyncQuestion &question) {
            return syncAnswer(board, question);
        },
        [this](PollHub::Time time) {
            m_server->callAt(time, [this] { m_polls->expire(Steady::now()); });
        });
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
            m_server->post([this, &room, sessions] { m_polls->endSessions(room->gate, sessions); });
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
        PlatformRoom &room = m_platforms.try_emplace(platform.id, platform).first->second;
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
    m_polls->wake(*place.board);
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
    m_polls->wake(*place.board, accounts);
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
            m_polls->wake(*place.board);
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

void Service::Impl::handle(HttpRequest request, HttpResponder responder)
{
    if (m_ending) {
        responder.answer(m_answers->stopping());
        return;
    }
    const std::string_view path = request.path;
    std::string_view rest;
    Place *place = placeOf(path, rest);
    if (!place) {
        answerOutside(std::move(request), std::move(responder));
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
    switch (roomOf(entry->kind)) {
    case PathRoom::Accounts:
        place->accounts->paths.handle(
            {entry->kind, *place->market, *place->board, std::move(request), std::move(responder)});
        break;
    case PathRoom::Trading:
        trade(
            {entry->kind, *place->market, *place->board, std::move(request), std::move(responder)},
            place->accounts->gate);
        break;
    case PathRoom::Charts:
        m_charts->handle(
            {entry->kind, *place->market, *place->board, std::move(request), std::move(responder)});
        break;
    case PathRoom::Applications:
        place->accounts->applications.handle(
            {entry->kind, *place->market, *place->board, std::move(request), std::move(responder)});
        break;
    case PathRoom::Money:
        place->accounts->money->handle(
            {entry->kind, *place->market, *place->board, std::move(request), std::move(responder)});
        break;
    case PathRoom::Cards:
        place->accounts->cards.handle(
            {entry->kind, *place->market, *place->board, std::move(request), std::move(responder)});
        break;
    case PathRoom::Market:
        if (entry->kind == PathKind::Sync)
            sync(*place, request, std::move(responder));
        else
            responder.answer(query(*place, entry->kind, request.query));
        break;
    }
}

void Service::Impl::trade(PathCall call, const SessionGate &gate)
{
    auto asked = gate.ask(call.request);
    if (auto *refusal = std::get_if<HttpAnswer>(&asked))
        call.responder.answer(std::move(*refusal));
    else
        m_trading->handle(std::move(call), std::get<SignedIn>(asked).account);
}

/// Below no market's prefix.
void Service::Impl::answerOutside(HttpRequest request, HttpResponder responder)
{
    const std::string_view path = request.path;
    const std::size_t second = path.find('/', 1);
    if (second == std::string_view::npos) {
        responder.answer(answerRoot(request));
        return;
    }
    const std::string_view folder = path.substr(1, second - 1);
    const std::string_view file = path.substr(second + 1);
    const auto room = m_accounts.find(folder);
    const LinkPage *page = room == m_accounts.end() ? nullptr : room->second->pages.find(file);
    if (page) {
        room->second->pages.handle(*page, std::move(request), std::move(responder));
        return;
    }
    const bool isCode = path == "/cgi-bin/qrcode.html";
    auto picture = folder == "bank" ? bankPicture(file) : std::nullopt;
    if (!isCode && !picture)
        responder.answer(answerPlatform(folder, file, request));
    else if (!isReading(request))
        responder.answer(m_answers->wrongMethod(readingMethods));
    else
        responder.answer(isCode ? answerQrCode(request) : std::move(*picture));
}

HttpAnswer Service::Impl::answerQrCode(const HttpRequest &request) const
{
    // Which platform has the code stands in no address: clients know one for all platforms.
    for (const auto &[id, room] : m_accounts) {
        if (auto picture = room->cards.qrCode(request))
            return std::move(*picture);
    }
    return m_answers->unknownCode();
}

HttpAnswer Service::Impl::answerRoot(const HttpRequest &request)
{
    const bool health = request.path == "/healthz";
    if (!health && request.path != "/metrics")
        return m_answers->notFound();
    if (request.method != "GET")
        return m_answers->wrongMethod("GET");
    HttpAnswer answer = health
        ? HttpAnswer::of(m_failed ? 503 : 200, m_failed ? "failed\n" : "ok\n")
        : HttpAnswer::of(200, metrics());
    answer.contentType = "text/plain; charset=utf-8";
    return answer;
}

HttpAnswer Service::Impl::answerPlatform(std::string_view id, std::string_view rest,
                                         const HttpRequest &request)
{
    const auto platform = m_platforms.find(id);
    if (platform == m_platforms.end())
        return m_answers->notFound();
    const PlatformRoom &room = platform->second;
    auto page = room.pages.page(rest);
    const bool isUpdate = rest == "update.html";
    if (!page && !isUpdate && rest != "market.html")
        return m_answers->notFound();
    if (page)
        return isReading(request) ? std::move(*page) : m_answers->wrongMethod(readingMethods);
    if (request.method != "GET")
        return m_answers->wrongMethod("GET");
    if (isUpdate)
        return update();
    ParameterReader read(request.query);
    if (!read.protocolFits())
        return m_answers->misread(read);
    return m_answers->done(room.board->market.text);
}

HttpAnswer Service::Impl::query(Place &place, PathKind kind, const HttpParameters &parameters)
{
    // A client of another protocol has to be able to learn that it is too old.
    if (kind == PathKind::Update)
        return update();
    if (kind == PathKind::Unserved)
        return m_answers->unserved();
    ParameterReader read(parameters);
    if (!read.protocolFits())
        return m_answers->misread(read);
    switch (kind) {
    case PathKind::Market:
        return m_answers->done(place.board->whole(Topic::Market));
    case PathKind::Message:
        return m_answers->done(place.board->whole(Topic::Message));
    case PathKind::Check:
        return m_answers->done(place.board->whole(Topic::Check));
    case PathKind::Composite:
        return m_answers->done(place.board->whole(Topic::Composite));
    case PathKind::Brief:
        return m_answers->done(place.board->whole(Topic::Brief));
    case PathKind::Type:
        return m_answers->done(place.board->whole(Topic::Type));
    case PathKind::List:
        return m_answers->done(place.board->whole(Topic::List));
    case PathKind::Item:
    case PathKind::Trade:
    case PathKind::Latest:
        return queryOfCollection(place, kind, read);
    default:
        return m_answers->unserved();
    }
}

HttpAnswer Service::Impl::queryOfCollection(Place &place, PathKind kind, ParameterReader &read)
{
    const auto collection = read.collection();
    const auto limit = kind == PathKind::Latest ? read.integer("limit", 0, mostDeals)
                                                : std::optional<std::int64_t>();
    if (!read.fault().empty())
        return m_answers->badParameter(read.fault());
    if (!collection)
        return m_answers->badParameter("collection");
    const auto row = place.board->rowOf(*collection);
    if (!row)
        return m_answers->unknownCollection();
    const Topic topic = kind == PathKind::Item ? Topic::Item
        : kind == PathKind::Trade              ? Topic::Trade
                                               : Topic::Latest;
    return m_answers->done(place.board->ofCollection(
        topic, *row, static_cast<std::size_t>(limit.value_or(usualDeals))));
}

void Service::Impl::sync(Place &place, const HttpRequest &request, HttpResponder responder)
{
    ParameterReader read(request.query);
    if (!read.protocolFits(ParameterReader::Required)) {
        responder.answer(m_answers->misread(read));
        return;
    }
    SyncQuestion question;
    std::optional<PollSession> session;
    if (!request.authorization.empty()) {
        const SessionGate &gate = place.accounts->gate;
        auto asked = gate.ask(request);
        if (auto *over = std::get_if<HttpAnswer>(&asked)) {
            responder.answer(std::move(*over));
            return;
        }
        const SignedIn &who = std::get<SignedIn>(asked);
        question.account = who.account;
        session = PollSession{&gate, who.session, Secret(request.authorization)};
    }
    const std::string *boot = request.query.find("boot");
    const bool comparable = !boot || *boot == m_envelope->boot();
    for (std::size_t i = 0; i < topicCount; ++i) {
        const auto held = read.integer(topicName(static_cast<Topic>(i)), 0, INT64_MAX);
        if (held)
            question.held[i] = comparable ? static_cast<std::uint64_t>(*held) : 0;
    }
    const auto wait = read.integer("wait", 0, longestWait).value_or(0);
    question.limit
        = static_cast<std::size_t>(read.integer("limit", 0, mostDeals).value_or(usualDeals));
    const auto collection = read.collection();
    if (!read.fault().empty()) {
        responder.answer(m_answers->badParameter(read.fault()));
        return;
    }
    if (collection) {
        question.row = place.board->rowOf(*collection);
        question.unknownCollection = !question.row;
    }
    if (wait == 0 || place.board->differs(question)) {
        responder.answer(syncAnswer(*place.board, question));
    } else if (m_polls->isFull()) {
        responder.answer(m_answers->busy());
    } else {
        m_polls->park(*place.board, question, std::move(responder),
                      Steady::now() + std::chrono::milliseconds(wait), std::move(session));
    }
}

HttpAnswer Service::Impl::syncAnswer(MarketBoard &board, const SyncQuestion &question) const
{
    static const HttpFragment end = fragment("}}}");
    HttpAnswer answer;
    answer.body.push_back(fragment(m_envelope->open(WireStatus::Ok) + ",\"data\":{\"topics\":{"));
    board.appendTopics(question, answer.body);
    answer.body.push_back(end);
    return answer;
}

HttpAnswer Service::Impl::update() const
{
    JsonText json;
    json.raw("\"version\":1").key("data").open('{');
    json.key("version").text(newestClient).key("minimum").text(oldestClient);
    json.key("protocol").number(protocolNumber).key("text").text("").close('}');
    return m_answers->done(fragment(json.take()));
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
    const HttpCounters &http = m_server->counters();
    text.add("zvexchange_connections_total", http.connections);
    text.add("zvexchange_connections_open", http.open);
    text.add("zvexchange_connections_turned_away_total", http.turnedAway);
    text.add("zvexchange_connections_cut_total", http.cutByDeadline);
    text.add("zvexchange_requests_total", http.requests);
    text.add("zvexchange_requests_refused_total", http.refused);
    text.add("zvexchange_bytes_sent_total", http.bytesOut);
    for (int hundred = 2; hundred <= 5; ++hundred)
        text.add("zvexchange_answers_total", http.answers[hundred], "status",
                 std::to_string(hundred) + "xx");
    text.add("zvexchange_polls_parked", m_polls->parked());
    for (std::size_t i = 0; i < topicCount; ++i)
        text.add("zvexchange_builds_total", m_builds[i], "topic",
                 std::string(topicName(static_cast<Topic>(i))));
    text.add("zvexchange_queries_total", m_queries->counters().answered);
    text.add("zvexchange_queries_turned_away_total", m_queries->counters().turnedAway);
    text.add("zvexchange_query_queue_depth", m_queries->waiting());
    text.add("zvexchange_robot_orders_total", m_robots ? m_robots->orders() : 0);
    for (const auto &[id, room] : m_accounts)
        addAccounts(text, id, room->desk);
    addMoney(text, *m_money);
    for (const auto &[prefix, place] : m_places) {
        const WriterCounters &writer = place.market->writer().counters();
        text.add("zvexchange_commands_total", writer.commands, "market", prefix);
        text.add("zvexchange_commands_turned_away_total", writer.refusedFull, "market", prefix);
        text.add("zvexchange_commits_total", writer.commits, "market", prefix);
        text.add("zvexchange_checkpoints_total", writer.checkpoints, "market", prefix);
        text.add("zvexchange_publications_total", writer.publications, "market", prefix);
        text.add("zvexchange_deals_total", writer.deals, "market", prefix);
        text.add("zvexchange_queue_depth", place.market->writer().waiting(), "market", prefix);
    }
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
            m_polls->endAll();
        });
        m_server->stop();
    }
    for (const auto &[id, room] : m_accounts)
        room->desk.stop();
    // After the desks, whose last codes may still move money.
    if (m_money)
        m_money->stop();
    if (m_queries)
        m_queries->stop();
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
