#include "exchange/kills/funded_folder.h"

#include "exchange/accounts/account_desk.h"
#include "exchange/accounts/account_file.h"
#include "exchange/accounts/password_hasher.h"
#include "exchange/accounts/password_pool.h"
#include "exchange/store/clock.h"
#include "exchange/store/exchange.h"

#include <fstream>
#include <future>
#include <sstream>
#include <stdexcept>

namespace zvxtest {

using namespace zvx;

namespace {

std::string textOf(const std::filesystem::path &file)
{
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

AccountDeskOptions deskOptions(const std::filesystem::path &folder)
{
    AccountDeskOptions options;
    options.folder = folder;
    options.platform = "lc";
    options.passwords
        = std::make_shared<PasswordPool>(std::make_shared<ArgonHasher>(ArgonCost::least()));
    return options;
}

std::vector<Trader> open(const std::filesystem::path &folder, int count)
{
    AccountDesk(deskOptions(folder)).stop();
    std::vector<Trader> traders;
    ArgonHasher hasher(ArgonCost::least());
    AccountFile file(folder / "lc.accounts", {}, AccountFile::kLogFrames);
    file.change([&] {
        for (int i = 1; i <= count; ++i) {
            Trader trader;
            trader.account = AccountId(i);
            trader.phone = std::to_string(13'900'000'000 + i);
            trader.password = "trader-" + std::to_string(i);
            StoredAccount account;
            account.id = trader.account;
            account.phone = trader.phone;
            account.password = hasher.hash(trader.password);
            account.created = SystemClock().wall();
            file.putAccount(account);
            const std::string tail = std::to_string(1000 + i);
            const BankCard card{"lanchuan", "林晓月", tail, std::string(28, '0') + tail};
            file.putCard({trader.account, card, account.created});
            traders.push_back(trader);
        }
    });
    return traders;
}

void signIn(const std::filesystem::path &folder, std::vector<Trader> &traders)
{
    AccountDesk desk(deskOptions(folder));
    for (Trader &trader : traders) {
        std::promise<std::string> token;
        const auto number = static_cast<std::uint64_t>(trader.account.value());
        desk.signIn({trader.phone, Secret(trader.password), number, {1, number}, "127.0.0.1"},
                    [&token](const AccountAnswer &answer) {
                        token.set_value(std::string(answer.token.text()));
                    });
        trader.token = token.get_future().get();
        if (trader.token.empty())
            throw std::runtime_error(trader.phone + " cannot sign in");
    }
}

void fund(const std::filesystem::path &folder, const std::vector<Trader> &traders)
{
    ExchangeOptions options;
    options.folder = folder;
    options.firstCatalogue = textOf(ZVX_SMALL_CATALOGUE);
    Exchange exchange(std::move(options));
    const MarketServer &market = *exchange.market(FundedFolder::kMarket);
    std::vector<Command> gifts;
    for (const Trader &trader : traders) {
        gifts.emplace_back(OpenAccount{trader.account, market.fee(), {}});
        gifts.emplace_back(Deposit{trader.account, FundedFolder::kMoney, {}});
        for (const auto &info : *market.snapshot()->infos.data)
            gifts.emplace_back(
                GrantHolding{trader.account, info->id, FundedFolder::kPieces, Fen(1), {}});
    }
    for (const Result &result : market.writer().execute(std::move(gifts)))
        if (result.status != Status::Accepted)
            throw std::runtime_error(std::string("a gift was refused: ") + name(result.status));
    exchange.stop();
}

} // namespace

std::vector<Trader> FundedFolder::make(const std::filesystem::path &folder, int count)
{
    std::filesystem::create_directories(folder);
    std::vector<Trader> traders = open(folder, count);
    signIn(folder, traders);
    fund(folder, traders);
    return traders;
}

} // namespace zvxtest
