#include "exchange/accounts/account_desk.h"

#include "exchange/accounts/account_office.h"
#include "exchange/accounts/account_request.h"
#include "exchange/accounts/card_book.h"
#include "exchange/accounts/link_book.h"
#include "exchange/accounts/outbox.h"
#include "exchange/accounts/password_pool.h"
#include "exchange/accounts/random_source.h"
#include "exchange/accounts/session_book.h"
#include "exchange/store/clock.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace zvx {
namespace {

constexpr std::int64_t kBetweenTidyings = AccountLimits::kMinute;

/// A request and who waits for its answer.
struct Visit {
    AccountRequest request;
    AccountDesk::Answered done;
};

void tell(const AccountDesk::Answered &done, AccountStatus status)
{
    if (!done)
        return;
    AccountAnswer answer;
    answer.status = status;
    done(answer);
}

/// Tells whoever waits for a request that was not carried out. Second halves have nobody: those who
/// wait for them are known by their key.
void tell(Visit &visit, AccountStatus status)
{
    if (auto *query = std::get_if<FavouritesQuery>(&visit.request)) {
        if (query->done)
            query->done({status, {}});
    } else if (auto *asked = std::get_if<ProfileQuery>(&visit.request)) {
        if (asked->done)
            asked->done({status, {}});
    } else {
        tell(visit.done, status);
    }
}

/// Where requests wait. Outlives the desk while the pool still has passwords of it.
struct DeskQueue {
    explicit DeskQueue(std::size_t most) : bound(most) { }

    /// Done, or what whoever asked is told; the visit is taken only where it is Done.
    AccountStatus take(Visit &visit)
    {
        {
            std::lock_guard<std::mutex> guard(mutex);
            if (!accepting)
                return AccountStatus::Failed;
            if (visits.size() >= bound)
                return AccountStatus::Busy;
            visits.push_back(std::move(visit));
        }
        wake.notify_one();
        return AccountStatus::Done;
    }

    /// Not bounded: no more come back than the pool took.
    void comeBack(AccountRequest request)
    {
        {
            std::lock_guard<std::mutex> guard(mutex);
            if (closed)
                return;
            visits.push_back({std::move(request), {}});
        }
        wake.notify_one();
    }

    const std::size_t bound;
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<Visit> visits;
    bool accepting = true;
    bool closed = false; ///< nobody looks any more
};

} // namespace

AccountAction sendAction(CodePurpose purpose)
{
    switch (purpose) {
    case CodePurpose::Register:
        return AccountAction::SendRegisterCode;
    case CodePurpose::Reset:
        return AccountAction::SendResetCode;
    case CodePurpose::Money:
    case CodePurpose::Link:
        break;
    }
    return AccountAction::SendMoneyCode;
}

/// The desk's thread and what it works with.
class AccountDesk::Room
{
public:
    explicit Room(AccountDeskOptions options);
    ~Room() { stop(); }

    /// Ends in one call of the request's callback, now or later.
    template <typename Request>
    void hand(Request request, Answered done);
    void stop();

    SessionState session(std::string_view token) const
    {
        return m_book.find(token, m_options.clock->wall());
    }
    LinkState link(std::string_view token) const
    {
        return m_links.find(token, m_options.clock->wall());
    }
    std::optional<BankCard> cardOf(AccountId account) const { return m_cards.find(account); }
    const std::string &platform() const { return m_options.platform; }
    std::optional<AccountId> demoAccount() const { return m_office.demoAccount(); }
    CodePair codePair(AccountId account, std::string_view market, ActionKey key) const
    {
        return m_office.codePair(account, market, key);
    }
    const AccountCounters &counters() const { return m_counters; }
    bool failed() const { return m_failed; }
    std::size_t liveSessions() const { return m_book.live(); }
    std::size_t waiting() const
    {
        std::lock_guard<std::mutex> guard(m_queue->mutex);
        return m_queue->visits.size();
    }

private:
    static AccountDeskOptions completed(AccountDeskOptions options);

    void run();
    /// Waits until there is something to do. False where nothing will come any more.
    bool await(std::vector<Visit> &batch, bool &tidy);
    void deliver(Afterwards after);
    void fail(const std::string &reason, std::vector<Visit> &batch);

    const AccountDeskOptions m_options;
    AccountCounters m_counters;
    std::shared_ptr<DeskQueue> m_queue;
    SessionBook m_book;
    LinkBook m_links;
    CardBook m_cards;
    std::atomic<bool> m_failed{false};

    // Touched by the desk's thread alone, once it runs.
    AccountFile m_file;
    TextCourier m_courier;
    AccountOffice m_office;
    SteadyMs m_tidyAt = 0;

    std::thread m_thread;
};

AccountDeskOptions AccountDesk::Room::completed(AccountDeskOptions options)
{
    options.limits.batchBound = std::max<std::size_t>(options.limits.batchBound, 1);
    if (!options.clock)
        options.clock = std::make_shared<SystemClock>();
    if (!options.random)
        options.random = std::make_shared<SystemRandom>();
    if (!options.passwords)
        options.passwords = std::make_shared<PasswordPool>();
    if (!options.texts)
        options.texts = std::make_shared<Outbox>(options.folder, options.clock);
    return options;
}

AccountDesk::Room::Room(AccountDeskOptions options)
    : m_options(completed(std::move(options))),
      m_queue(std::make_shared<DeskQueue>(m_options.limits.queueBound)),
      m_book(m_options.limits.sessionLife), m_links(m_options.limits.linkLife),
      m_file(m_options.folder / (m_options.platform + ".accounts"), m_options.vfs,
             AccountFile::kLogFrames),
      m_courier(m_options.texts, m_counters, m_options.notice),
      m_office({m_file, *m_options.clock, *m_options.random, *m_options.passwords,
                [own = m_queue](AccountRequest request) { own->comeBack(std::move(request)); },
                [this] { return m_courier.waiting(); }},
               m_options, m_counters)
{
    for (const StoredSession &session : m_file.sessions())
        m_book.put(session);
    for (const StoredLink &link : m_file.links())
        m_links.put(link);
    for (const StoredCard &card : m_file.cards())
        m_cards.put(card.account, card.card);
    m_tidyAt = m_options.clock->steady();
    m_thread = std::thread([this] { run(); });
}

template <typename Request>
void AccountDesk::Room::hand(Request request, Answered done)
{
    AccountStatus status = problemOf(request);
    Visit visit{std::move(request), std::move(done)};
    if (status == AccountStatus::Done)
        status = m_queue->take(visit);
    if (status == AccountStatus::Done)
        return;
    if (status == AccountStatus::Busy)
        ++m_counters.turnedAway;
    tell(visit, status);
}

void AccountDesk::Room::stop()
{
    {
        std::lock_guard<std::mutex> guard(m_queue->mutex);
        m_queue->accepting = false;
    }
    m_queue->wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
    m_courier.stop();
}

bool AccountDesk::Room::await(std::vector<Visit> &batch, bool &tidy)
{
    Clock &clock = *m_options.clock;
    std::unique_lock<std::mutex> lock(m_queue->mutex);
    std::deque<Visit> &visits = m_queue->visits;
    for (;;) {
        const SteadyMs now = clock.steady();
        tidy = now >= m_tidyAt;
        if (tidy)
            m_tidyAt = now + kBetweenTidyings;
        if (tidy || !visits.empty())
            break;
        // What is out to the pool comes back, also when nothing else is taken any more.
        if (!m_queue->accepting && !m_office.waitsForPasswords()) {
            m_queue->closed = true;
            return false;
        }
        clock.wait(m_queue->wake, lock, m_tidyAt);
    }
    const std::size_t size = std::min(visits.size(), m_options.limits.batchBound);
    const auto end = visits.begin() + static_cast<std::ptrdiff_t>(size);
    batch.assign(std::make_move_iterator(visits.begin()), std::make_move_iterator(end));
    visits.erase(visits.begin(), end);
    return true;
}

void AccountDesk::Room::run()
{
    std::vector<Visit> batch;
    bool tidy = false;
    while (await(batch, tidy)) {
        try {
            const bool changed = m_file.change([&] {
                for (Visit &visit : batch)
                    m_office.carryOut(visit.request, visit.done);
                if (tidy)
                    m_office.tidy();
            });
            m_counters.commits += changed ? 1 : 0;
        } catch (const std::exception &error) {
            fail(error.what(), batch);
            return;
        }
        batch.clear();
        deliver(m_office.takeAfterwards());
    }
}

void AccountDesk::Room::deliver(Afterwards after)
{
    std::vector<std::int64_t> ended;
    for (const SessionChange &change : after.sessions) {
        switch (change.kind) {
        case SessionChange::Begins:
            m_book.put(change.session);
            break;
        case SessionChange::Ends:
            m_book.end(change.session.number, change.session.kind);
            ended.push_back(change.session.number);
            break;
        case SessionChange::IsForgotten:
            m_book.forget(change.session.number);
            break;
        }
    }
    for (const StoredLink &link : after.links.links)
        m_links.put(link);
    for (const std::string &token : after.links.forgotten)
        m_links.forget(token);
    for (const StoredCard &card : after.links.cards)
        m_cards.put(card.account, card.card);
    if (!ended.empty() && m_options.sessionsEnded)
        m_options.sessionsEnded(ended);
    for (TextMessage &message : after.texts)
        m_courier.take(std::move(message));
    for (const ActionBook::Reply &reply : after.replies)
        reply(false);
}

void AccountDesk::Room::fail(const std::string &reason, std::vector<Visit> &batch)
{
    m_failed = true;
    std::deque<Visit> rest;
    {
        std::lock_guard<std::mutex> guard(m_queue->mutex);
        m_queue->accepting = false;
        m_queue->closed = true;
        rest.swap(m_queue->visits);
    }
    m_office.fail();
    for (Visit &visit : batch)
        tell(visit, AccountStatus::Failed);
    for (Visit &visit : rest)
        tell(visit, AccountStatus::Failed);
    batch.clear();
    if (m_options.fatal)
        m_options.fatal(reason);
}

AccountDesk::AccountDesk(AccountDeskOptions options)
    : m_room(std::make_unique<Room>(std::move(options)))
{
}

AccountDesk::~AccountDesk() = default;

void AccountDesk::stop()
{
    m_room->stop();
}

void AccountDesk::signIn(SignInRequest request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::sendCode(CodeRequest request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::registerAccount(RegisterRequest request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::resetPassword(ResetRequest request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

CodePair AccountDesk::codePair(AccountId account, std::string_view market, ActionKey key) const
{
    return m_room->codePair(account, market, key);
}

void AccountDesk::checkMoneyCode(MoneyCodeCheck request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::changeFavourite(FavouriteChange request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::makeLink(LinkRequest request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::prepareCard(CardRequest request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::prepareAmount(AmountRequest request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::sendLinkCode(LinkCodeRequest request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::confirmLink(LinkConfirmation request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::giveLinkBack(LinkReturn request, Answered done)
{
    m_room->hand(std::move(request), std::move(done));
}

void AccountDesk::resolve(AccountAction action, ActionKey key, AccountId account, Answered done)
{
    m_room->hand(ResolveRequest{action, {account, key}}, std::move(done));
}

void AccountDesk::favourites(AccountId account, std::string market, std::int64_t page,
                             std::int64_t size, std::function<void(const FavouritesAnswer &)> done)
{
    m_room->hand(FavouritesQuery{account, std::move(market), page, size, std::move(done)}, {});
}

void AccountDesk::profile(AccountId account, std::function<void(const ProfileAnswer &)> done)
{
    m_room->hand(ProfileQuery{account, std::move(done)}, {});
}

SessionState AccountDesk::session(std::string_view token) const
{
    return m_room->session(token);
}

std::optional<BankCard> AccountDesk::cardOf(AccountId account) const
{
    return m_room->cardOf(account);
}

LinkState AccountDesk::link(std::string_view token) const
{
    return m_room->link(token);
}

const std::string &AccountDesk::platform() const
{
    return m_room->platform();
}

std::optional<AccountId> AccountDesk::demoAccount() const
{
    return m_room->demoAccount();
}

const AccountCounters &AccountDesk::counters() const
{
    return m_room->counters();
}

std::size_t AccountDesk::waiting() const
{
    return m_room->waiting();
}

std::size_t AccountDesk::liveSessions() const
{
    return m_room->liveSessions();
}

bool AccountDesk::failed() const
{
    return m_room->failed();
}

} // namespace zvx
