#include "exchange/service/trading_paths.h"

#include "exchange/service/account_command.h"
#include "exchange/service/action_form.h"
#include "exchange/service/action_refusal.h"
#include "exchange/service/cap_figures.h"
#include "exchange/service/json_text.h"
#include "exchange/service/market_board.h"
#include "exchange/service/parameters.h"
#include "exchange/service/query_pool.h"
#include "exchange/service/revoke_outcome.h"
#include "exchange/service/trading_fields.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"

#include <optional>
#include <string>
#include <utility>

namespace zvx {

/// An action on its way to its answer.
struct TradingPaths::Action {
    PathKind kind;
    MarketServer &market;
    HttpResponder responder;
    AccountId account;
    ActionKey key;
    bool resolve;
    std::vector<OrderNumber> orders = {}; ///< to be withdrawn
};

namespace {

/// What is to be done for a form, with the orders that it names; or the field that is wrong.
std::variant<Command, WrongField> commandOf(PathKind kind, const ActionForm &form,
                                            AccountId account, std::vector<OrderNumber> &orders)
{
    if (kind == PathKind::Revoke) {
        const std::string *text = form.fields.find("orders");
        if (text)
            orders = readOrderNumbers(*text);
        // A client that asks for its answer may leave out what it had asked for.
        if (orders.empty() && (text || !form.resolve))
            return "orders";
        if (!form.resolve)
            return RevokeOrders{account, orders, form.key};
    }
    if (form.resolve)
        return BurnKey{account, form.key};
    auto read = readOrderForm(form.fields, kind == PathKind::Buy ? Side::Buy : Side::Sell);
    if (auto *wrong = std::get_if<WrongField>(&read))
        return std::move(*wrong);
    PlaceOrder &order = std::get<PlaceOrder>(read);
    order.account = account;
    order.key = form.key;
    return order;
}

/// Statuses that speak of the orders of a withdrawal, not of the withdrawal.
bool isOfOrders(Status status)
{
    return status == Status::OrderUnknown || status == Status::NotYourOrder
        || status == Status::OrderDone;
}

} // namespace

TradingPaths::TradingPaths(const WireAnswers &answers, QueryPool &queries)
    : m_answers(answers), m_queries(queries)
{
}

void TradingPaths::handle(PathCall call, AccountId account)
{
    if (call.kind == PathKind::Cap)
        cap(std::move(call), account);
    else
        act(std::move(call), account);
}

void TradingPaths::act(PathCall call, AccountId account)
{
    auto read = readActionForm(call.request, m_answers);
    if (auto *fault = std::get_if<HttpAnswer>(&read)) {
        call.responder.answer(std::move(*fault));
        return;
    }
    const ActionForm &form = std::get<ActionForm>(read);
    std::vector<OrderNumber> orders;
    const auto command = commandOf(call.kind, form, account, orders);
    if (const auto *wrong = std::get_if<WrongField>(&command)) {
        call.responder.answer(m_answers.badParameter(*wrong));
        return;
    }
    const auto action
        = std::make_shared<Action>(Action{call.kind, call.market, std::move(call.responder),
                                          account, form.key, form.resolve, std::move(orders)});
    carryOutFor(
        call.market, account, std::get<Command>(command),
        [this, action](const Result &result) { tell(*action, result); },
        [this, action](NotDone why) {
            action->responder.answer(why == NotDone::QueueFull ? m_answers.busy()
                                                               : m_answers.stopping());
        });
}

void TradingPaths::tell(Action &action, const Result &result)
{
    const Status status = result.meaning();
    const bool isRevoke = action.kind == PathKind::Revoke;
    if (isRevoke && (status == Status::Accepted || isOfOrders(status)))
        tellRevoked(action, result);
    else if (status != Status::Accepted)
        tellRefusal(action, status);
    else if (result.order == OrderNumber(0))
        tellRefusal(action, Status::KeyDiffers); // the key of a withdrawal, or of money
    else
        action.responder.answer(
            m_answers.doneWith("{\"order\":" + std::to_string(result.order.value()) + "}"));
}

void TradingPaths::tellRefusal(Action &action, Status status)
{
    // Where a key could not be burnt, what it stands for is as open as before.
    const bool isFull = status == Status::TooManyActions || status == Status::AccountUnknown;
    if (action.resolve && isFull) {
        action.responder.answer(m_answers.busy());
        return;
    }
    const ActionRefusal &refusal = refusalOf(status);
    action.responder.answer(m_answers.refused(refusal.reason, refusal.message));
}

void TradingPaths::tellRevoked(Action &action, const Result &result)
{
    const bool some = result.meaning() == Status::Accepted;
    const bool all = some && result.revoked == static_cast<std::int64_t>(action.orders.size());
    if (some && result.revoked == 0)
        tellRefusal(action, Status::KeyDiffers); // the key of an order
    else if (!all && !action.orders.empty())
        tellEachOrder(action);
    else if (!some)
        tellRefusal(action, Status::OrderUnknown);
    else
        action.responder.answer(
            m_answers.doneWith("{\"revoked\":" + std::to_string(result.revoked) + "}"));
}

void TradingPaths::tellEachOrder(Action &action)
{
    // Which orders it were, and whose, stands in the store: the market forgets what has ended.
    m_queries.answer(action.market, std::move(action.responder),
                     [&answers = m_answers, account = action.account, key = action.key,
                      orders = std::move(action.orders)](MarketReader &reader) {
                         const auto outcome
                             = RevokeOutcome::of(orders, reader.orders(orders), account, key);
                         return answers.envelope().refusal(WireStatus::Refused, outcome.message(),
                                                           outcome.reason(), outcome.data());
                     });
}

void TradingPaths::cap(PathCall call, AccountId account)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    // Taken before the figures are read, so that they are never older than it.
    const std::uint64_t version = call.board.accounts().of(account);
    m_queries.answer(
        call.market, std::move(call.responder),
        [&answers = m_answers, &market = call.market, account, version](MarketReader &reader) {
            const AccountState state = reader.account(account);
            JsonText json;
            json.raw("\"version\":" + std::to_string(version)).key("data");
            writeCap(json, capFigures(state, *market.snapshot()));
            return answers.done(std::make_shared<const std::string>(json.take()));
        });
}

} // namespace zvx
