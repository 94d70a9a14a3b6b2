#include "exchange/accounts/account_office.h"

#include "exchange/accounts/account_rules.h"
#include "exchange/accounts/digest.h"
#include "exchange/accounts/password_pool.h"
#include "exchange/accounts/random_source.h"
#include "exchange/accounts/session_book.h"
#include "exchange/store/clock.h"

#include <algorithm>

namespace zvx {
namespace {

constexpr std::size_t kSecretBytes = 32;
constexpr std::size_t kTokenBytes = 32;
constexpr std::size_t kFingerprintBytes = 16;

constexpr std::string_view kSecretRow = "secret"; ///< its presence tells that the file is made
constexpr std::string_view kDemoRow = "demo"; ///< the demo account's id
constexpr std::string_view kDemoPhone = "13800000000";
constexpr std::string_view kDemoPassword = "demo888888";
constexpr std::string_view kDemoName = "演示账户";

std::int64_t secondsOf(std::int64_t milliseconds)
{
    return (milliseconds + 999) / 1000;
}

TimeMs earlier(TimeMs time, std::int64_t milliseconds)
{
    return TimeMs(time.value() - milliseconds);
}

/// What limits count the sign-ins of a peer at a phone by.
std::string pairOf(const std::string &phone, const std::string &peer)
{
    return phone + ' ' + peer;
}

/// The content of an action, which its key stands for. Passwords and codes stay out: who reads the
/// file must not be able to try them against it.
template <typename... Parts>
std::string fingerprint(const Parts &...parts)
{
    Digest digest(kFingerprintBytes);
    (digest << ... << parts);
    return digest.finish();
}

/// What a code for money is good for. A pair holds no lines of its own.
std::string boundTo(const std::string &market, const CodePair &pair)
{
    return market + '\n' + pair.first + '\n' + pair.second;
}

CodeOwner ownerOf(const PasswordHashed &half)
{
    const bool registers = half.action == AccountAction::Register;
    return {registers ? CodePurpose::Register : CodePurpose::Reset, half.phone};
}

/// Whether an answer to a request with a code changed something: used it up, or counted a guess.
bool leavesTraces(AccountStatus status)
{
    return status == AccountStatus::Done || status == AccountStatus::CodeWrong
        || status == AccountStatus::AlreadyRegistered;
}

} // namespace

AccountOffice::AccountOffice(Tools tools, const AccountDeskOptions &options,
                             AccountCounters &counters)
    : m_file(tools.file), m_clock(tools.clock), m_random(tools.random),
      m_passwords(tools.passwords), m_comeBack(std::move(tools.comeBack)),
      m_textsWaiting(std::move(tools.textsWaiting)), m_limits(options.limits),
      m_platform(options.platform),
      m_platformName(options.platformName.empty() ? options.platform : options.platformName),
      m_counters(counters),
      m_signInsOfPeer(m_limits.signInsOfPeer, m_limits.signInOfPeerEvery, m_limits.throttleBound),
      m_signInsOfPhone(m_limits.signInsOfPhone, m_limits.signInOfPhoneEvery,
                       m_limits.throttleBound),
      m_textsOfPeer(m_limits.textsOfPeer, m_limits.textOfPeerEvery, m_limits.throttleBound),
      m_actions(m_file, m_clock, m_limits, m_counters)
{
    m_file.change([&] {
        if (!m_file.meta(kSecretRow)) {
            std::string secret(kSecretBytes, '\0');
            m_random.fill(secret.data(), secret.size());
            m_file.putMeta(kSecretRow, secret);
            if (options.demo) {
                StoredAccount account;
                account.id = AccountId(1);
                account.phone = kDemoPhone;
                account.name = kDemoName;
                account.password = m_passwords.hashNow(kDemoPassword);
                account.created = m_clock.wall();
                m_file.putAccount(account);
                m_file.putMeta(kDemoRow, std::to_string(account.id.value()));
            }
        }
    });
    if (const auto demo = m_file.meta(kDemoRow))
        m_demo = AccountId(std::stoll(*demo));
    m_lastAccount = m_file.lastAccount();
    m_lastSession = m_file.lastSession();
    const std::string secret = m_file.meta(kSecretRow).value();
    m_codes.emplace(m_file, m_random, secret, m_limits);
    const auto sendCodeOfLink
        = [this](const CodeOwner &owner, const std::string &peer, const std::string &use) {
              AccountAnswer answer = maySendCode(owner, peer);
              if (answer.status == AccountStatus::Done)
                  sendCode(owner, peer, true, use);
              return answer;
          };
    m_links.emplace(LinkOffice::Tools{m_file, m_clock, m_random, *m_codes, sendCodeOfLink}, secret,
                    m_limits);
}

void AccountOffice::carryOut(AccountRequest &request, Answered &done)
{
    std::visit([&](auto &kind) { work(kind, done); }, request);
}

Afterwards AccountOffice::takeAfterwards()
{
    Afterwards taken = std::exchange(m_afterwards, {});
    taken.replies = m_actions.takeReplies();
    taken.links = m_links->takeChanges();
    return taken;
}

void AccountOffice::work(ResolveRequest &request, Answered &done)
{
    m_actions.resolve(request.name, request.action, done);
}

// --- signing in

bool AccountOffice::goesToPool(const std::string &peer)
{
    std::size_t &out = m_hashesOfPeer[peer];
    if (out >= m_limits.hashesOfPeer)
        return false;
    ++out;
    return true;
}

void AccountOffice::cameBack(const std::string &peer)
{
    const auto found = m_hashesOfPeer.find(peer);
    if (--found->second == 0)
        m_hashesOfPeer.erase(found);
}

void AccountOffice::work(SignInRequest &request, Answered &done)
{
    PasswordChecked half;
    half.name = {{}, request.key};
    half.phone = std::move(request.phone);
    half.peer = peerGroup(request.peer);
    half.client = request.client;
    const std::string content = fingerprint(half.phone, static_cast<std::int64_t>(half.client));
    if (!m_actions.begin(half.name, AccountAction::SignIn, content, done))
        return;

    const SteadyMs now = m_clock.steady();
    const std::string pair = pairOf(half.phone, half.peer);
    const std::int64_t wait
        = std::max(m_signInsOfPeer.wait(pair, now), m_signInsOfPhone.wait(half.phone, now));
    if (wait > 0) {
        AccountAnswer answer;
        answer.status = AccountStatus::TooOften;
        answer.wait = secondsOf(wait);
        return m_actions.finish(half.name, std::move(answer), Keep::Memory);
    }
    if (!m_signInsOfPeer.room(pair, now) || !m_signInsOfPhone.room(half.phone, now)
        || !goesToPool(half.peer))
        return m_actions.finish(half.name, AccountStatus::Busy, Keep::Nowhere);

    // The attempt is counted before the password is looked at, so that many at once are as many.
    m_signInsOfPeer.take(pair, now);
    m_signInsOfPhone.take(half.phone, now);
    std::string stored = m_passwords.decoy();
    if (const auto account = m_file.accountOf(half.phone)) {
        stored = account->password;
        half.account = account->id;
        half.passwordVersion = account->passwordVersion;
    }
    const PasswordPool::Verified back = [half, comeBack = m_comeBack](std::optional<bool> right) {
        PasswordChecked checked = half;
        checked.right = right;
        comeBack(std::move(checked));
    };
    if (!m_passwords.verify(std::move(stored), std::move(request.password), back)) {
        Answered nobody;
        work(half, nobody);
    }
}

void AccountOffice::work(PasswordChecked &half, Answered &)
{
    cameBack(half.peer);
    const std::string pair = pairOf(half.phone, half.peer);
    if (!half.right) {
        m_signInsOfPeer.giveBack(pair);
        m_signInsOfPhone.giveBack(half.phone);
        return m_actions.finish(half.name, AccountStatus::Busy, Keep::Nowhere);
    }
    const auto account = m_file.account(half.account);
    // A password that was replaced while it was compared opens nothing any more.
    if (!*half.right || !account || account->passwordVersion != half.passwordVersion)
        return m_actions.finish(half.name, AccountStatus::WrongPassword, Keep::Memory);

    m_signInsOfPeer.refill(pair);
    m_signInsOfPhone.giveBack(half.phone);
    ++m_counters.signIns;
    m_actions.finish(half.name, beginSession(*account, half.client), Keep::Memory);
}

AccountAnswer AccountOffice::beginSession(const StoredAccount &account, std::uint64_t client)
{
    const TimeMs now = m_clock.wall();
    std::vector<std::int64_t> own; // oldest first
    for (const StoredSession &live : m_file.liveSessions(account.id)) {
        if (live.client == client)
            own.push_back(live.number);
        else
            endSession(live.number, SessionState::Elsewhere, now);
    }
    const std::size_t room = std::max<std::size_t>(m_limits.sessionsOfClient, 1) - 1;
    for (std::size_t i = 0; i + room < own.size(); ++i)
        endSession(own[i], SessionState::Ended, now);

    AccountAnswer answer;
    answer.token = randomToken(m_random, kTokenBytes);
    answer.session = ++m_lastSession;
    answer.profile = profileOf(account);
    StoredSession session;
    session.number = answer.session;
    session.token = SessionBook::hashOf(answer.token.text());
    session.account = account.id;
    session.client = client;
    session.created = now;
    m_file.putSession(session);
    m_afterwards.sessions.push_back({std::move(session), SessionChange::Begins});
    return answer;
}

void AccountOffice::endSession(std::int64_t number, SessionState::Kind kind, TimeMs now)
{
    m_file.endSession(number, kind, now);
    StoredSession session;
    session.number = number;
    session.kind = kind;
    m_afterwards.sessions.push_back({std::move(session), SessionChange::Ends});
}

// --- codes

void AccountOffice::work(CodeRequest &request, Answered &done)
{
    const bool signedIn = request.purpose == CodePurpose::Money;
    CodeOwner owner{request.purpose, request.phone};
    std::string content = fingerprint(owner.phone);
    if (signedIn) {
        owner.bound
            = boundTo(request.market, m_codes->pair(request.account, request.market, request.key));
        content = fingerprint(owner.phone, request.market);
    }
    const KeyName name{signedIn ? request.account : AccountId(), request.key};
    const AccountAction action = sendAction(owner.purpose);
    if (!m_actions.begin(name, action, std::move(content), done))
        return;

    const std::string peer = peerGroup(request.peer);
    // Asked for in every case, so that the same work is done for a known phone and an unknown one.
    const auto account = m_file.accountOf(owner.phone);
    if (signedIn && (!account || account->id != request.account))
        return m_actions.finish(name, AccountStatus::NotYourPhone, Keep::Memory);
    AccountAnswer refused = maySendCode(owner, peer);
    if (refused.status != AccountStatus::Done) {
        const Keep keep = refused.status == AccountStatus::Busy ? Keep::Nowhere : Keep::Memory;
        return m_actions.finish(name, std::move(refused), keep);
    }
    const char *use = owner.purpose == CodePurpose::Register ? "注册账户"
        : owner.purpose == CodePurpose::Reset                ? "找回密码"
                                                             : "转入资金";
    sendCode(owner, peer, account.has_value(), use);
    m_actions.finish(name, AccountStatus::Done, Keep::Disk);
}

AccountAnswer AccountOffice::maySendCode(const CodeOwner &owner, const std::string &peer)
{
    const SteadyMs now = m_clock.steady();
    AccountAnswer answer;
    answer.wait = secondsOf(m_textsOfPeer.wait(peer, now));
    if (answer.wait > 0) {
        answer.status = AccountStatus::TooOften;
        return answer;
    }
    const CodeBook::Refusal refusal = m_codes->mayIssue(owner, m_clock.wall());
    answer.status = refusal.status;
    answer.wait = refusal.wait;
    if (answer.status == AccountStatus::Done
        && (m_textsWaiting() + m_afterwards.texts.size() >= m_limits.textBound
            || !m_textsOfPeer.room(peer, now)))
        answer.status = AccountStatus::Busy;
    return answer;
}

void AccountOffice::sendCode(const CodeOwner &owner, const std::string &peer, bool known,
                             const std::string &use)
{
    m_textsOfPeer.take(peer, m_clock.steady());
    const bool decoy = owner.purpose == CodePurpose::Register ? known : !known;
    sendText(owner, known, m_codes->issue(owner, decoy, m_clock.wall()), use);
}

void AccountOffice::sendText(const CodeOwner &owner, bool known, Secret code,
                             const std::string &use)
{
    std::string text = "【" + m_platformName + "】";
    if (!code.empty()) {
        // Longer than any text is, so that no half of a code stays behind in memory that was left.
        text.reserve(512);
        text += "验证码";
        text += code.text();
        text += "，用于" + use + "，" + std::to_string(m_limits.codeLife / AccountLimits::kMinute)
            + "分钟内有效。请勿告诉他人。";
    } else if (owner.purpose == CodePurpose::Register && known) {
        text += "该手机号已注册，请直接登录；忘记密码可使用密码找回。如非本人操作，请忽略。";
    } else {
        text.clear();
    }
    m_afterwards.texts.push_back({owner.phone, Secret(text)});
    wipe(text.data(), text.size());
}

void AccountOffice::work(MoneyCodeCheck &request, Answered &done)
{
    const KeyName name{request.account, request.key};
    if (!m_actions.begin(name, AccountAction::CheckMoneyCode,
                         fingerprint(request.phone, request.market, request.amount.value()), done))
        return;
    const auto account = m_file.account(request.account);
    if (!account)
        return m_actions.finish(name, AccountStatus::AccountUnknown, Keep::Memory);
    if (!request.phone.empty() && account->phone != request.phone)
        return m_actions.finish(name, AccountStatus::NotYourPhone, Keep::Memory);
    const CodeOwner owner{CodePurpose::Money, account->phone,
                          boundTo(request.market, request.pair)};
    const CodeBook::Checked checked
        = m_codes->check(owner, request.code.text(), peerGroup(request.peer), m_clock.wall());
    if (checked.status == AccountStatus::Done)
        m_codes->use(owner, checked.issued);
    m_actions.finish(name, checked.status,
                     leavesTraces(checked.status) ? Keep::Disk : Keep::Memory);
}

// --- one-time links

void AccountOffice::work(LinkRequest &request, Answered &done)
{
    m_actions.answer(m_links->carryOut(request), done);
}

void AccountOffice::work(CardRequest &request, Answered &done)
{
    m_actions.answer(m_links->carryOut(request), done);
}

void AccountOffice::work(AmountRequest &request, Answered &done)
{
    m_actions.answer(m_links->carryOut(request), done);
}

void AccountOffice::work(LinkCodeRequest &request, Answered &done)
{
    m_actions.answer(m_links->carryOut(request), done);
}

void AccountOffice::work(LinkConfirmation &request, Answered &done)
{
    m_actions.answer(m_links->carryOut(request), done);
}

void AccountOffice::work(LinkReturn &request, Answered &done)
{
    m_actions.answer(m_links->carryOut(request), done);
}

// --- registering and passwords

void AccountOffice::work(RegisterRequest &request, Answered &done)
{
    PasswordHashed half;
    half.name = {{}, request.key};
    half.action = AccountAction::Register;
    half.referee = std::move(request.referee);
    half.phone = std::move(request.phone);
    half.peer = peerGroup(request.peer);
    const std::string content = fingerprint(half.referee, half.phone);
    if (m_actions.begin(half.name, half.action, content, done))
        checkAndHash(std::move(half), request.code, std::move(request.password));
}

void AccountOffice::work(ResetRequest &request, Answered &done)
{
    PasswordHashed half;
    half.name = {{}, request.key};
    half.action = AccountAction::Reset;
    half.phone = std::move(request.phone);
    half.peer = peerGroup(request.peer);
    if (m_actions.begin(half.name, half.action, fingerprint(half.phone), done))
        checkAndHash(std::move(half), request.code, std::move(request.password));
}

void AccountOffice::checkAndHash(PasswordHashed half, const Secret &code, Secret password)
{
    const CodeBook::Checked checked
        = m_codes->check(ownerOf(half), code.text(), half.peer, m_clock.wall());
    if (checked.status != AccountStatus::Done)
        return m_actions.finish(half.name, checked.status,
                                leavesTraces(checked.status) ? Keep::Disk : Keep::Memory);
    if (!goesToPool(half.peer))
        return m_actions.finish(half.name, AccountStatus::Busy, Keep::Nowhere);
    half.issued = checked.issued;
    const PasswordPool::Hashed back
        = [half, comeBack = m_comeBack](const std::optional<std::string> &stored) {
              PasswordHashed hashed = half;
              hashed.stored = stored;
              comeBack(std::move(hashed));
          };
    if (!m_passwords.hash(std::move(password), back)) {
        Answered nobody;
        work(half, nobody);
    }
}

void AccountOffice::work(PasswordHashed &half, Answered &)
{
    cameBack(half.peer);
    if (!half.stored)
        return m_actions.finish(half.name, AccountStatus::Busy, Keep::Nowhere);
    const AccountStatus status
        = half.action == AccountAction::Register ? registerNow(half) : resetNow(half);
    m_actions.finish(half.name, status, leavesTraces(status) ? Keep::Disk : Keep::Memory);
}

AccountStatus AccountOffice::registerNow(const PasswordHashed &half)
{
    m_codes->use(ownerOf(half), half.issued);
    if (m_file.accountOf(half.phone))
        return AccountStatus::AlreadyRegistered;
    StoredAccount account;
    account.id = m_lastAccount = AccountId(m_lastAccount.value() + 1);
    account.phone = half.phone;
    account.name = maskedPhone(half.phone);
    account.referee = half.referee;
    account.password = *half.stored;
    account.created = m_clock.wall();
    m_file.putAccount(account);
    return AccountStatus::Done;
}

AccountStatus AccountOffice::resetNow(const PasswordHashed &half)
{
    if (!m_codes->use(ownerOf(half), half.issued))
        return AccountStatus::CodeUsed;
    // A right code was sent to the phone of an account, and accounts stay.
    const StoredAccount account = m_file.accountOf(half.phone).value();
    m_file.setPassword(account.id, *half.stored);
    const TimeMs now = m_clock.wall();
    for (const StoredSession &live : m_file.liveSessions(account.id))
        endSession(live.number, SessionState::Ended, now);
    // The owner has shown who it is; what others tried does not keep it out.
    m_signInsOfPeer.refill(pairOf(half.phone, half.peer));
    m_signInsOfPhone.refill(half.phone);
    return AccountStatus::Done;
}

// --- the account

void AccountOffice::work(FavouriteChange &request, Answered &done)
{
    const KeyName name{request.account, request.key};
    const AccountAction action
        = request.add ? AccountAction::AddFavourite : AccountAction::RemoveFavourite;
    if (!m_actions.begin(name, action, fingerprint(request.market, request.collection.value()),
                         done))
        return;
    if (!m_file.account(request.account))
        return m_actions.finish(name, AccountStatus::AccountUnknown, Keep::Memory);
    // One that is added again goes to the end, so it goes away first; a full list keeps it then.
    m_file.dropFavourite(request.account, request.market, request.collection);
    if (request.add) {
        if (m_file.favouriteCount(request.account, request.market) >= m_limits.favourites)
            return m_actions.finish(name, AccountStatus::TooManyFavourites, Keep::Memory);
        m_file.appendFavourite(request.account, request.market, request.collection);
    }
    m_actions.finish(name, AccountStatus::Done, Keep::Disk);
}

void AccountOffice::work(FavouritesQuery &query, Answered &)
{
    FavouritesAnswer answer;
    // No list is so long; multiplied out the number might not fit.
    if (query.page <= static_cast<std::int64_t>(m_limits.favourites))
        answer.collections = m_file.favourites(query.account, query.market,
                                               (query.page - 1) * query.size, query.size);
    m_actions.add([answer = std::move(answer), done = std::exchange(query.done, {})](bool failed) {
        if (done)
            done(failed ? FavouritesAnswer{AccountStatus::Failed, {}} : answer);
    });
}

void AccountOffice::work(ProfileQuery &query, Answered &)
{
    ProfileAnswer answer;
    answer.status = AccountStatus::AccountUnknown;
    if (const auto account = m_file.account(query.account))
        answer = {AccountStatus::Done, profileOf(*account)};
    m_actions.add([answer = std::move(answer), done = std::exchange(query.done, {})](bool failed) {
        if (done)
            done(failed ? ProfileAnswer{AccountStatus::Failed, {}} : answer);
    });
}

AccountProfile AccountOffice::profileOf(const StoredAccount &account) const
{
    return {account.id,      accountNumber(m_platform, account.id),
            account.phone,   account.name,
            account.referee, account.created};
}

// --- housekeeping

void AccountOffice::tidy()
{
    const TimeMs now = m_clock.wall();
    const TimeMs tooOld = earlier(now, m_limits.sessionLife);
    for (const StoredSession &session : m_file.liveSessionsUntil(tooOld))
        endSession(session.number, SessionState::Ended, now);
    for (const std::int64_t number : m_file.forgetSessions(tooOld, m_limits.endedSessions)) {
        StoredSession session;
        session.number = number;
        m_afterwards.sessions.push_back({std::move(session), SessionChange::IsForgotten});
    }
    m_file.forgetCodes(earlier(now, AccountLimits::kDay));
    m_file.forgetCounts(exchangeDay(now) - 1);
    m_links->tidy();
    m_actions.forgetOld();
}

} // namespace zvx
