#include "exchange/service/account_paths.h"

#include "exchange/service/account_refusal.h"
#include "exchange/service/action_form.h"
#include "exchange/service/json_text.h"
#include "exchange/service/market_board.h"
#include "exchange/service/parameters.h"
#include "exchange/service/query_pool.h"
#include "exchange/service/session_gate.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketreader.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace zvx {

namespace {

constexpr std::int64_t mostFavourites = 100;
constexpr std::int64_t usualFavourites = 10;
constexpr std::int64_t lastPage = INT32_MAX;
constexpr std::size_t clientDigits = 16;

/// Whether a path works on the account that is signed in.
bool needsSession(PathKind kind)
{
    switch (kind) {
    case PathKind::Account:
    case PathKind::Favourites:
    case PathKind::FavouriteAdd:
    case PathKind::FavouriteRemove:
        return true;
    default:
        return false;
    }
}

AccountAction actionOf(PathKind kind)
{
    switch (kind) {
    case PathKind::RegisterCode:
        return AccountAction::SendRegisterCode;
    case PathKind::Register:
        return AccountAction::Register;
    case PathKind::ResetCode:
        return AccountAction::SendResetCode;
    case PathKind::Reset:
        return AccountAction::Reset;
    case PathKind::FavouriteAdd:
        return AccountAction::AddFavourite;
    case PathKind::FavouriteRemove:
        return AccountAction::RemoveFavourite;
    default:
        return AccountAction::SignIn;
    }
}

std::string textOf(const ActionForm &form, std::string_view name)
{
    const std::string *text = form.fields.find(name);
    return text ? *text : std::string();
}

Secret secretOf(const ActionForm &form, std::string_view name)
{
    const std::string *text = form.fields.find(name);
    return text ? Secret(*text) : Secret();
}

/// Reads exactly 16 lower-case hexadecimal digits.
std::optional<std::uint64_t> clientOf(const ActionForm &form)
{
    const std::string *text = form.fields.find("client");
    if (!text || text->size() != clientDigits)
        return std::nullopt;
    std::uint64_t client = 0;
    for (const char c : *text) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit && (c < 'a' || c > 'f'))
            return std::nullopt;
        client = client << 4 | static_cast<std::uint64_t>(isDigit ? c - '0' : c - 'a' + 10);
    }
    return client;
}

/// The account as `myaccount.html` tells it.
std::string accountJson(const AccountProfile &profile, const AccountFees &fees)
{
    JsonText json;
    json.open('{').key("account").text(profile.number).key("phone").text(profile.phone);
    json.key("name").text(profile.name).key("poundage").number(fees.fee.value());
    json.key("poundageOf").open('[');
    for (const auto &[collection, rate] : fees.special)
        json.open('[').text(std::to_string(collection.value())).number(rate.value()).close(']');
    return json.close(']').close('}').take();
}

std::string favouritesJson(const std::vector<CollectionId> &collections)
{
    JsonText json;
    json.open('{').key("collections").open('[');
    for (const CollectionId id : collections)
        json.text(std::to_string(id.value()));
    return json.close(']').close('}').take();
}

/// The desk's callbacks are copied about, a responder is not.
std::shared_ptr<HttpResponder> shared(HttpResponder &responder)
{
    return std::make_shared<HttpResponder>(std::move(responder));
}

} // namespace

AccountPaths::AccountPaths(AccountDesk &desk, const SessionGate &gate, QueryPool &queries,
                           const WireAnswers &answers)
    : m_desk(desk), m_gate(gate), m_queries(queries), m_answers(answers)
{
}

void AccountPaths::handle(PathCall call)
{
    AccountId account;
    if (needsSession(call.kind)) {
        auto asked = m_gate.ask(call.request);
        if (auto *refusal = std::get_if<HttpAnswer>(&asked)) {
            call.responder.answer(std::move(*refusal));
            return;
        }
        account = std::get<SignedIn>(asked).account;
    }
    if (call.kind == PathKind::Account)
        showAccount(std::move(call), account);
    else if (call.kind == PathKind::Favourites)
        showFavourites(std::move(call), account);
    else
        act(std::move(call), account);
}

AccountDesk::Answered AccountPaths::answering(PathCall &call) const
{
    return [this, &market = call.market,
            responder = shared(call.responder)](const AccountAnswer &result) {
        if (verdict(result.status) != AccountVerdict::Done)
            responder->answer(accountRefusal(m_answers, result.status, result.wait));
        else if (result.token.empty())
            responder->answer(m_answers.doneWith());
        else
            tellAccount(market, std::move(*responder), result.profile, result.token.copy());
    };
}

void AccountPaths::tellAccount(MarketServer &market, HttpResponder responder,
                               const AccountProfile &profile, Secret token) const
{
    m_queries.answer(
        market, std::move(responder),
        [&answers = m_answers, &market, profile,
         token = std::make_shared<const Secret>(std::move(token))](MarketReader &reader) {
            // Who never traded in this market has its usual fee there.
            const std::string account = accountJson(
                profile, reader.fees(profile.id).value_or(AccountFees{market.fee(), {}}));
            if (token->empty())
                return answers.doneWith(account);
            JsonText json;
            json.open('{').key("token").text(token->text()).key("account").raw(account).close('}');
            return answers.doneWith(json.take());
        });
}

void AccountPaths::act(PathCall call, AccountId account)
{
    auto read = readActionForm(call.request, m_answers);
    if (auto *refusal = std::get_if<HttpAnswer>(&read)) {
        call.responder.answer(std::move(*refusal));
        return;
    }
    const ActionForm &form = std::get<ActionForm>(read);
    if (form.resolve) {
        m_desk.resolve(actionOf(call.kind), form.key, account, answering(call));
        return;
    }
    switch (call.kind) {
    case PathKind::Register:
        m_desk.registerAccount({textOf(form, "referee"), textOf(form, "phone"),
                                secretOf(form, "password"), secretOf(form, "code"), form.key,
                                call.request.peer},
                               answering(call));
        break;
    case PathKind::Reset:
        m_desk.resetPassword({textOf(form, "phone"), secretOf(form, "password"),
                              secretOf(form, "code"), form.key, call.request.peer},
                             answering(call));
        break;
    case PathKind::RegisterCode:
        sendCode(call, form, CodePurpose::Register);
        break;
    case PathKind::ResetCode:
        sendCode(call, form, CodePurpose::Reset);
        break;
    case PathKind::FavouriteAdd:
    case PathKind::FavouriteRemove:
        changeFavourite(call, form, account);
        break;
    default:
        signIn(call, form);
        break;
    }
}

void AccountPaths::signIn(PathCall &call, const ActionForm &form)
{
    const auto client = clientOf(form);
    if (!client) {
        call.responder.answer(m_answers.badParameter("client"));
        return;
    }
    m_desk.signIn(
        {textOf(form, "phone"), secretOf(form, "password"), *client, form.key, call.request.peer},
        answering(call));
}

void AccountPaths::sendCode(PathCall &call, const ActionForm &form, CodePurpose purpose)
{
    m_desk.sendCode({purpose, textOf(form, "phone"), {}, form.key, call.request.peer},
                    answering(call));
}

void AccountPaths::changeFavourite(PathCall &call, const ActionForm &form, AccountId account)
{
    ParameterReader read(form.fields);
    const auto collection = read.collection();
    if (!collection) {
        call.responder.answer(m_answers.badParameter("collection"));
        return;
    }
    if (!call.board.rowOf(*collection)) {
        call.responder.answer(m_answers.unknownCollection());
        return;
    }
    m_desk.changeFavourite(
        {account, call.market.prefix(), *collection, call.kind == PathKind::FavouriteAdd, form.key},
        answering(call));
}

void AccountPaths::showAccount(PathCall call, AccountId account)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    m_desk.profile(account,
                   [this, &market = call.market,
                    responder = shared(call.responder)](const ProfileAnswer &result) {
                       if (result.status == AccountStatus::Done)
                           tellAccount(market, std::move(*responder), result.profile);
                       else
                           responder->answer(accountRefusal(m_answers, result.status));
                   });
}

void AccountPaths::showFavourites(PathCall call, AccountId account)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    const auto page = read.integer("page", 1, lastPage).value_or(1);
    const auto size = read.integer("size", 1, mostFavourites).value_or(usualFavourites);
    if (!read.fault().empty()) {
        call.responder.answer(m_answers.badParameter(read.fault()));
        return;
    }
    m_desk.favourites(
        account, call.market.prefix(), page, size,
        [&answers = m_answers, responder = shared(call.responder)](const FavouritesAnswer &result) {
            responder->answer(result.status == AccountStatus::Done
                                  ? answers.doneWith(favouritesJson(result.collections))
                                  : accountRefusal(answers, result.status));
        });
}

} // namespace zvx
