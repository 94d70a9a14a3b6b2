#include "serving/seededstate.h"

#include "serving/benchcatalogue.h"

#include "exchange/accounts/account_desk.h"
#include "exchange/accounts/password_hasher.h"
#include "exchange/accounts/password_pool.h"
#include "exchange/accounts/text_gateway.h"
#include "exchange/store/exchange.h"

#include <algorithm>
#include <condition_variable>
#include <fstream>
#include <map>
#include <mutex>
#include <random>
#include <stdexcept>

using namespace zvx;

namespace {

constexpr const char *kPassword = "bench888888";

// Keeps the codes that were sent.
class Letterbox : public TextGateway
{
public:
    void send(std::string_view phone, std::string_view text) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::string &code = m_codes[std::string(phone)];
        code.clear();
        for (std::size_t i = 0; i < text.size() && code.size() < 4; ++i) {
            const bool isDigit = text[i] >= '0' && text[i] <= '9';
            if (isDigit)
                code.push_back(text[i]);
            else if (!code.empty())
                code.clear();
        }
        m_came.notify_all();
    }

    std::string codeOf(const std::string &phone)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_came.wait(lock, [&] { return m_codes[phone].size() == 4; });
        return m_codes[phone];
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_came;
    std::map<std::string, std::string> m_codes;
};

ActionKey randomKey()
{
    static std::mt19937_64 random{std::random_device{}()};
    return {random() | 1, random()};
}

// What the bench needs of an answer.
struct Entry {
    AccountStatus status = AccountStatus::Failed;
    std::string token;
    long long account = 0;
};

// Waits for the one answer of the desk.
template <class Call>
Entry await(const Call &call)
{
    std::mutex mutex;
    std::condition_variable done;
    bool isDone = false;
    Entry found;
    call([&](const AccountAnswer &answer) {
        const std::lock_guard<std::mutex> lock(mutex);
        found = {answer.status, std::string(answer.token.text()), answer.profile.id.value()};
        isDone = true;
        done.notify_all();
    });
    std::unique_lock<std::mutex> lock(mutex);
    done.wait(lock, [&] { return isDone; });
    if (found.status != AccountStatus::Done)
        throw std::runtime_error("an account was refused: " + std::string(reason(found.status)));
    return found;
}

} // namespace

SeededState::SeededState(const std::filesystem::path &folder, std::size_t collections,
                         std::size_t accounts, std::size_t held)
    : m_folder(folder)
{
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "catalogue.json", std::ios::binary) << benchcatalogue::text(collections);
    openAccounts(accounts);
    fillPurses(held);
}

std::filesystem::path SeededState::store() const
{
    return m_folder / "lc-bench.market";
}

void SeededState::openAccounts(std::size_t count)
{
    const auto texts = std::make_shared<Letterbox>();
    AccountDeskOptions options;
    options.folder = m_folder;
    options.platform = benchcatalogue::platform;
    options.passwords
        = std::make_shared<PasswordPool>(std::make_shared<ArgonHasher>(ArgonCost::least()));
    options.texts = texts;
    options.limits.textsOfPeer = static_cast<int>(count) + 1;
    AccountDesk desk(options);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string phone = std::to_string(13'900'000'000 + static_cast<long long>(i));
        await([&](auto done) {
            CodeRequest request;
            request.phone = phone;
            request.key = randomKey();
            request.peer = "127.0.0.1";
            desk.sendCode(request, done);
        });
        await([&](auto done) {
            RegisterRequest request;
            request.phone = phone;
            request.password = Secret(kPassword);
            request.code = Secret(texts->codeOf(phone));
            request.key = randomKey();
            request.peer = "127.0.0.1";
            desk.registerAccount(std::move(request), done);
        });
        const Entry session = await([&](auto done) {
            SignInRequest request;
            request.phone = phone;
            request.password = Secret(kPassword);
            request.client = i + 1;
            request.key = randomKey();
            request.peer = "127.0.0.1";
            desk.signIn(std::move(request), done);
        });
        m_traders.push_back({session.account, session.token});
    }
    desk.stop();
}

void SeededState::fillPurses(std::size_t held) const
{
    ExchangeOptions options;
    options.folder = m_folder;
    Exchange exchange(std::move(options));
    MarketWriter &writer = exchange.market(benchcatalogue::prefix)->writer();
    std::vector<Command> commands;
    for (const Trader &trader : m_traders) {
        const AccountId account(trader.account);
        commands.push_back(OpenAccount{account});
        commands.push_back(Deposit{account, Fen(100'000'000'000)});
        for (std::size_t i = 0; i < held; ++i)
            commands.push_back(GrantHolding{
                account, CollectionId(benchcatalogue::firstCollection + static_cast<int>(i)),
                Quantity(pieces), Fen(benchcatalogue::previousClose(i))});
    }
    for (const Result &result : writer.execute(commands)) {
        if (result.status != Status::Accepted)
            throw std::runtime_error(std::string("a purse was not filled: ")
                                     + zvx::name(result.status));
    }
    exchange.stop();
}
