#include "exchange/accounts/desk_bench.h"

#include "exchange/accounts/password_pool.h"

#include <cctype>
#include <cstdio>
#include <new>
#include <stdexcept>

namespace zvx {

void PrintTo(AccountStatus status, std::ostream *out)
{
    *out << (status == AccountStatus::Done ? std::string_view("done") : reason(status));
}

} // namespace zvx

namespace zvx::test {

void SeededRandom::fill(void *to, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        static_cast<unsigned char *>(to)[i] = static_cast<unsigned char>(m_random());
}

std::string FakeHasher::hash(std::string_view password)
{
    ++hashes;
    if (meanwhile)
        meanwhile();
    if (outOfMemory)
        throw std::bad_alloc();
    return "fake:" + std::string(password);
}

bool FakeHasher::verify(const std::string &stored, std::string_view password)
{
    ++verifications;
    if (meanwhile)
        meanwhile();
    if (outOfMemory)
        throw std::bad_alloc();
    return stored == "fake:" + std::string(password);
}

void FakeTexts::send(std::string_view phone, std::string_view text)
{
    if (meanwhile)
        meanwhile();
    if (broken)
        throw std::runtime_error("the gateway is broken");
    std::lock_guard<std::mutex> guard(m_mutex);
    m_texts.push_back({std::string(phone), std::string(text)});
    m_changed.notify_all();
}

std::vector<FakeTexts::Text> FakeTexts::texts(std::size_t atLeast)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_changed.wait_for(lock, kPatience, [&] { return m_texts.size() >= atLeast; }))
        ADD_FAILURE() << "only " << m_texts.size() << " of " << atLeast << " texts were sent";
    return m_texts;
}

std::string codeIn(const std::string &text)
{
    // The first run of digits: the texts say the code before the minutes.
    std::string digits;
    for (const char c : text) {
        if (std::isdigit(static_cast<unsigned char>(c)))
            digits.push_back(c);
        else if (!digits.empty())
            break;
    }
    return digits;
}

Outcome outcomeOf(const AccountAnswer &answer)
{
    return {answer.status, answer.wait, std::string(answer.token.text()), answer.session,
            answer.profile};
}

Outcome await(Pending &pending)
{
    if (pending.wait_for(kPatience) != std::future_status::ready) {
        ADD_FAILURE() << "no answer came";
        return {};
    }
    return pending.get();
}

DeskBench::DeskBench(Adjust adjust)
    : clock(std::make_shared<ManualClock>(kMorning)), hasher(std::make_shared<FakeHasher>()),
      texts(std::make_shared<FakeTexts>()), m_adjust(std::move(adjust)),
      m_random(std::make_shared<SeededRandom>(1))
{
    open();
}

DeskBench::~DeskBench()
{
    close();
}

void DeskBench::open()
{
    AccountDeskOptions options;
    options.folder = m_folder.path();
    options.platform = "lc";
    options.platformName = "岚川";
    options.clock = clock;
    options.random = m_random;
    options.texts = texts;
    options.sessionsEnded = [this](const std::vector<std::int64_t> &sessions) {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_ended.insert(m_ended.end(), sessions.begin(), sessions.end());
    };
    options.notice = [this](const std::string &line) {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_notices.push_back(line);
    };
    options.fatal = [this](const std::string &reason) {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_fatals.push_back(reason);
    };
    if (m_adjust)
        m_adjust(options);
    if (!options.passwords)
        options.passwords = std::make_shared<PasswordPool>(hasher);
    m_desk = std::make_unique<AccountDesk>(std::move(options));
}

void DeskBench::close()
{
    if (!m_desk)
        return;
    m_desk.reset();
    EXPECT_EQ(m_asked, m_answered) << "each question has one answer";
}

void DeskBench::reopen()
{
    close();
    open();
}

AccountDesk::Answered DeskBench::watch(Pending &pending)
{
    ++m_asked;
    // A second call would throw out of the promise and end the program.
    const auto promise = std::make_shared<std::promise<Outcome>>();
    pending = promise->get_future();
    return [this, promise](const AccountAnswer &answer) {
        ++m_answered;
        promise->set_value(outcomeOf(answer));
    };
}

Pending DeskBench::signInLater(const std::string &phone, const std::string &password,
                               std::uint64_t client, const std::string &peer, ActionKey key)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().signIn({phone, Secret(password), client, keyOr(key), peer}, std::move(done));
    return pending;
}

Outcome DeskBench::signIn(const std::string &phone, const std::string &password,
                          std::uint64_t client, const std::string &peer, ActionKey key)
{
    Pending pending = signInLater(phone, password, client, peer, key);
    return await(pending);
}

Pending DeskBench::sendCodeLater(CodePurpose purpose, const std::string &phone, AccountId account,
                                 const std::string &peer, ActionKey key)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    key = keyOr(key);
    m_codeKeys[account.value()] = key;
    desk().sendCode({purpose, phone, account, key, peer}, std::move(done));
    return pending;
}

Outcome DeskBench::sendCode(CodePurpose purpose, const std::string &phone, AccountId account,
                            const std::string &peer, ActionKey key)
{
    Pending pending = sendCodeLater(purpose, phone, account, peer, key);
    return await(pending);
}

Pending DeskBench::registerLater(const std::string &phone, const std::string &password,
                                 const std::string &code, const std::string &referee,
                                 const std::string &peer, ActionKey key)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().registerAccount({referee, phone, Secret(password), Secret(code), keyOr(key), peer},
                           std::move(done));
    return pending;
}

Outcome DeskBench::registerAccount(const std::string &phone, const std::string &password,
                                   const std::string &code, const std::string &referee,
                                   const std::string &peer, ActionKey key)
{
    Pending pending = registerLater(phone, password, code, referee, peer, key);
    return await(pending);
}

Pending DeskBench::resetLater(const std::string &phone, const std::string &password,
                              const std::string &code, const std::string &peer, ActionKey key)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().resetPassword({phone, Secret(password), Secret(code), keyOr(key), peer},
                         std::move(done));
    return pending;
}

Outcome DeskBench::reset(const std::string &phone, const std::string &password,
                         const std::string &code, const std::string &peer, ActionKey key)
{
    Pending pending = resetLater(phone, password, code, peer, key);
    return await(pending);
}

Outcome DeskBench::checkMoney(AccountId account, const std::string &phone, const std::string &code,
                              const std::string &peer, ActionKey key)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    const CodePair pair = desk().codePair(account, {}, m_codeKeys[account.value()]);
    desk().checkMoneyCode({account, phone, Secret(code), keyOr(key), peer, {}, pair},
                          std::move(done));
    return await(pending);
}

Pending DeskBench::favouriteLater(AccountId account, std::int64_t collection, bool add,
                                  const std::string &market, ActionKey key)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().changeFavourite({account, market, CollectionId(collection), add, keyOr(key)},
                           std::move(done));
    return pending;
}

Outcome DeskBench::favourite(AccountId account, std::int64_t collection, bool add,
                             const std::string &market, ActionKey key)
{
    Pending pending = favouriteLater(account, collection, add, market, key);
    return await(pending);
}

Pending DeskBench::resolveLater(AccountAction action, ActionKey key, AccountId account)
{
    Pending pending;
    desk().resolve(action, key, account, watch(pending));
    return pending;
}

Outcome DeskBench::resolve(AccountAction action, ActionKey key, AccountId account)
{
    Pending pending = resolveLater(action, key, account);
    return await(pending);
}

Outcome DeskBench::makeLink(LinkPurpose purpose, AccountId account, const std::string &market)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().makeLink({purpose, account, market}, std::move(done));
    return await(pending);
}

Outcome DeskBench::prepareCard(const std::string &link, const std::string &number,
                               const std::string &holder, const std::string &bank,
                               const std::string &peer)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().prepareCard({Secret(link), bank, holder, Secret(number), peer}, std::move(done));
    return await(pending);
}

Outcome DeskBench::prepareAmount(const std::string &link, std::int64_t fen, const std::string &peer)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().prepareAmount({Secret(link), Fen(fen), peer}, std::move(done));
    return await(pending);
}

Outcome DeskBench::sendLinkCode(const std::string &link, const std::string &peer)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().sendLinkCode({Secret(link), peer}, std::move(done));
    return await(pending);
}

Outcome DeskBench::confirmLink(const std::string &link, const std::string &code,
                               const std::string &peer)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().confirmLink({Secret(link), Secret(code), peer}, std::move(done));
    return await(pending);
}

Outcome DeskBench::giveLinkBack(const std::string &link, ActionKey key)
{
    Pending pending;
    AccountDesk::Answered done = watch(pending);
    desk().giveLinkBack({Secret(link), key}, std::move(done));
    return await(pending);
}

void DeskBench::bindCard(AccountId account, const std::string &number)
{
    const std::size_t before = texts->texts().size();
    const std::string link = makeLink(LinkPurpose::OpenAccount, account).token;
    EXPECT_EQ(prepareCard(link, number).status, AccountStatus::Done);
    EXPECT_EQ(confirmLink(link, newestCode(before + 1)).status, AccountStatus::Done);
}

std::vector<std::int64_t> DeskBench::favourites(AccountId account, std::int64_t page,
                                                std::int64_t size, const std::string &market)
{
    std::promise<std::vector<std::int64_t>> promise;
    auto future = promise.get_future();
    desk().favourites(account, market, page, size, [&](const FavouritesAnswer &answer) {
        std::vector<std::int64_t> numbers;
        for (const CollectionId id : answer.collections)
            numbers.push_back(id.value());
        EXPECT_EQ(answer.status, AccountStatus::Done);
        promise.set_value(numbers);
    });
    return future.get();
}

ProfileAnswer DeskBench::profile(AccountId account)
{
    std::promise<ProfileAnswer> promise;
    auto future = promise.get_future();
    desk().profile(account, [&](const ProfileAnswer &answer) { promise.set_value(answer); });
    return future.get();
}

std::string DeskBench::codeFor(CodePurpose purpose, const std::string &phone, AccountId account)
{
    const std::size_t before = texts->texts().size();
    EXPECT_EQ(sendCode(purpose, phone, account).status, AccountStatus::Done);
    const FakeTexts::Text text = texts->texts(before + 1).back();
    EXPECT_EQ(text.phone, phone);
    return codeIn(text.text);
}

std::string DeskBench::wrong(const std::string &code)
{
    std::string other = code;
    other.back() = other.back() == '9' ? '0' : static_cast<char>(other.back() + 1);
    return other;
}

AccountId DeskBench::makeAccount(const std::string &phone, const std::string &password)
{
    const std::string code = codeFor(CodePurpose::Register, phone);
    EXPECT_EQ(registerAccount(phone, password, code).status, AccountStatus::Done);
    const Outcome signedIn = signIn(phone, password);
    EXPECT_EQ(signedIn.status, AccountStatus::Done);
    return signedIn.profile.id;
}

void DeskBench::settle()
{
    (void)profile(AccountId(1));
}

void DeskBench::pass(std::int64_t milliseconds)
{
    clock->advance(milliseconds);
    settle();
    // What fell due with the first question is done when the second is answered.
    settle();
}

std::vector<std::int64_t> DeskBench::ended()
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_ended;
}

std::vector<std::string> DeskBench::notices()
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_notices;
}

std::vector<std::string> DeskBench::fatals()
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_fatals;
}

std::string phone(int number)
{
    char text[12];
    std::snprintf(text, sizeof text, "139%08d", number);
    return text;
}

} // namespace zvx::test
