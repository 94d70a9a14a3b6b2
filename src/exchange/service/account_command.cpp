#include "exchange/service/account_command.h"

#include "exchange/store/exchange.h"

#include <memory>
#include <utility>

namespace zvx {

namespace {

/// A command on its way, shared by the attempts to carry it out.
struct Errand {
    MarketServer &market;
    AccountId account;
    Command command;
    std::function<void(const Result &)> answered;
    std::function<void(NotDone)> notDone;
};

void submit(const std::shared_ptr<Errand> &errand, bool opened)
{
    MarketWriter &writer = errand->market.writer();
    // The queue keeps its order: the account is there when the command's turn comes. Two that open
    // one account at the same time are no harm, and neither is an account without a command.
    const auto answered = [errand, opened](const Result &result) {
        if (result.status == Status::AccountUnknown && !opened)
            submit(errand, true);
        else
            errand->answered(result);
    };
    const auto lost = [errand] { errand->notDone(NotDone::MarketEnded); };
    if ((opened && !writer.submit(OpenAccount{errand->account, errand->market.fee(), {}}, {}))
        || !writer.submit(errand->command, answered, lost))
        errand->notDone(writer.hasEnded() ? NotDone::MarketEnded : NotDone::QueueFull);
}

} // namespace

void carryOutFor(MarketServer &market, AccountId account, const Command &command,
                 std::function<void(const Result &)> answered, std::function<void(NotDone)> notDone)
{
    submit(std::make_shared<Errand>(
               Errand{market, account, command, std::move(answered), std::move(notDone)}),
           false);
}

} // namespace zvx
