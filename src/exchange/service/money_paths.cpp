#include "exchange/service/money_paths.h"

#include "exchange/service/account_refusal.h"
#include "exchange/service/action_form.h"
#include "exchange/service/json_text.h"
#include "exchange/service/money_refusal.h"
#include "exchange/service/parameters.h"
#include "exchange/service/query_pool.h"
#include "exchange/service/record_question.h"
#include "exchange/service/session_gate.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketreader.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace zvx {

namespace {

std::string textOf(const ActionForm &form, std::string_view name)
{
    const std::string *text = form.fields.find(name);
    return text ? *text : std::string();
}

/// Whole fen; what is too much is for the desk to refuse in words.
std::optional<Fen> amountOf(const ActionForm &form)
{
    const auto amount = readInteger(textOf(form, "amount"), 1, kAmountBound);
    return amount ? std::make_optional(Fen(*amount)) : std::nullopt;
}

HttpAnswer badAmount(const WireAnswers &answers)
{
    return answers.envelope().refusal(WireStatus::BadRequest,
                                      "请输入正确的金额，最小单位为 0.01 元。", "amount");
}

std::string flowsJson(const std::vector<FlowRow> &flows)
{
    JsonText json;
    json.open('{').key("flows").open('[');
    for (const FlowRow &flow : flows) {
        json.open('{').key("number").number(flow.number).key("time").number(flow.begunAt.value());
        json.key("in").boolean(flow.incoming).key("amount").number(flow.amount.value());
        json.key("state").number(static_cast<std::int64_t>(flow.state));
        json.key("balance").number(flow.balance.value()).close('}');
    }
    return json.close(']').close('}').take();
}

} // namespace

MoneyPaths::MoneyPaths(AccountDesk &accounts, MoneyDesk &money, const SessionGate &gate,
                       QueryPool &queries, const WireAnswers &answers)
    : m_accounts(accounts), m_money(money), m_gate(gate), m_queries(queries), m_answers(answers)
{
}

void MoneyPaths::handle(PathCall call)
{
    auto asked = m_gate.ask(call.request);
    if (auto *refusal = std::get_if<HttpAnswer>(&asked)) {
        call.responder.answer(std::move(*refusal));
        return;
    }
    const AccountId account = std::get<SignedIn>(asked).account;
    switch (call.kind) {
    case PathKind::MoneyCode:
        sendCode(std::move(call), account);
        break;
    case PathKind::MoneyIn:
        moneyIn(std::move(call), account);
        break;
    case PathKind::MoneyOut:
        moneyOut(std::move(call), account);
        break;
    default:
        list(std::move(call), account);
        break;
    }
}

void MoneyPaths::sendCode(PathCall call, AccountId account)
{
    auto read = readActionForm(call.request, m_answers);
    if (auto *refusal = std::get_if<HttpAnswer>(&read)) {
        call.responder.answer(std::move(*refusal));
        return;
    }
    const ActionForm &form = std::get<ActionForm>(read);
    const std::string &market = call.market.prefix();
    const ActionKey key = form.key;
    const bool hasCard = m_accounts.cardOf(account).has_value();
    const auto responder = std::make_shared<HttpResponder>(std::move(call.responder));
    const auto done = [this, responder, account, market, key](const AccountAnswer &result) {
        if (result.status != AccountStatus::Done) {
            responder->answer(accountRefusal(m_answers, result.status, result.wait));
            return;
        }
        const CodePair pair = m_accounts.codePair(account, market, key);
        JsonText json;
        json.open('{').key("first").text(pair.first).key("second").text(pair.second).close('}');
        responder->answer(m_answers.doneWith(json.take()));
    };
    if (form.resolve) {
        m_accounts.resolve(AccountAction::SendMoneyCode, key, account, done);
    } else if (!hasCard) {
        responder->answer(
            m_answers.refused(moneyReason(Status::NoBankCard),
                              moneySentence(Status::NoBankCard, true, m_money.limits())));
    } else {
        m_accounts.sendCode(
            {CodePurpose::Money, textOf(form, "phone"), account, key, call.request.peer, market},
            done);
    }
}

void MoneyPaths::moneyIn(PathCall call, AccountId account)
{
    auto read = readActionForm(call.request, m_answers);
    if (auto *refusal = std::get_if<HttpAnswer>(&read)) {
        call.responder.answer(std::move(*refusal));
        return;
    }
    const ActionForm &form = std::get<ActionForm>(read);
    const auto responder = std::make_shared<HttpResponder>(std::move(call.responder));
    if (form.resolve) {
        resolveIn(call.market, account, form.key, responder);
        return;
    }
    const auto amount = amountOf(form);
    if (!amount) {
        responder->answer(badAmount(m_answers));
        return;
    }
    const auto card = m_accounts.cardOf(account);
    // What cannot be done anyway uses up no code. Without a card, or with this amount, nothing is
    // begun whatever changes meanwhile.
    if (!card || *amount > m_money.limits().ofTransfer) {
        m_money.moneyIn(account, call.market, *amount, form.key, card, answering(responder));
        return;
    }
    const std::string *code = form.fields.find("code");
    const auto checked = [this, responder, account, &market = call.market, amount = *amount,
                          key = form.key, card](const AccountAnswer &result) {
        if (result.status == AccountStatus::Done)
            m_money.moneyIn(account, market, amount, key, card, answering(responder));
        else
            responder->answer(accountRefusal(m_answers, result.status, result.wait));
    };
    m_accounts.checkMoneyCode({account,
                               {},
                               code ? Secret(*code) : Secret(),
                               form.key,
                               call.request.peer,
                               call.market.prefix(),
                               {textOf(form, "first"), textOf(form, "second")},
                               *amount},
                              checked);
}

void MoneyPaths::resolveIn(MarketServer &market, AccountId account, ActionKey key,
                           Responder responder)
{
    // The market comes first: what it burns cannot begin any more, whatever becomes of the code.
    m_money.resolve(account, market, true, key,
                    [this, responder, account, key](const MoneyDesk::Outcome &outcome) {
                        if (outcome.reason != moneyReason(Status::KeyBurnt)) {
                            responder->answer(told(outcome));
                            return;
                        }
                        // Nothing was begun; perhaps since the code was refused.
                        m_accounts.resolve(
                            AccountAction::CheckMoneyCode, key, account,
                            [this, responder, outcome](const AccountAnswer &result) {
                                responder->answer(
                                    result.status == AccountStatus::Done
                                        ? told(outcome)
                                        : accountRefusal(m_answers, result.status, result.wait));
                            });
                    });
}

void MoneyPaths::moneyOut(PathCall call, AccountId account)
{
    auto read = readActionForm(call.request, m_answers);
    if (auto *refusal = std::get_if<HttpAnswer>(&read)) {
        call.responder.answer(std::move(*refusal));
        return;
    }
    const ActionForm &form = std::get<ActionForm>(read);
    const auto responder = std::make_shared<HttpResponder>(std::move(call.responder));
    const auto amount = amountOf(form);
    if (form.resolve)
        m_money.resolve(account, call.market, false, form.key, answering(responder));
    else if (!amount)
        responder->answer(badAmount(m_answers));
    else
        m_money.moneyOut(account, call.market, *amount, form.key, m_accounts.cardOf(account),
                         answering(responder));
}

void MoneyPaths::list(PathCall call, AccountId account)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    RecordPage page = readPage(read);
    readKind(read, page);
    readPeriod(read, page);
    if (!read.fault().empty()) {
        call.responder.answer(m_answers.badParameter(read.fault()));
        return;
    }
    m_queries.answer(call.market, std::move(call.responder),
                     [&answers = m_answers, account, page](MarketReader &reader) {
                         return answers.doneWith(flowsJson(reader.flows(account, page)));
                     });
}

MoneyDesk::Done MoneyPaths::answering(Responder responder) const
{
    return
        [this, responder](const MoneyDesk::Outcome &outcome) { responder->answer(told(outcome)); };
}

HttpAnswer MoneyPaths::told(const MoneyDesk::Outcome &outcome) const
{
    switch (outcome.status) {
    case MoneyDesk::Status::Accepted:
        return m_answers.doneWith();
    case MoneyDesk::Status::Busy:
        return m_answers.busy();
    case MoneyDesk::Status::Failed:
        return m_answers.stopping();
    default:
        return m_answers.refused(outcome.reason, outcome.message);
    }
}

} // namespace zvx
