#include "exchange/service/card_paths.h"

#include "exchange/service/account_refusal.h"
#include "exchange/service/json_text.h"
#include "exchange/service/parameters.h"
#include "exchange/service/public_address.h"
#include "exchange/service/qr_picture.h"
#include "exchange/service/session_gate.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"

#include <memory>
#include <utility>
#include <variant>

namespace zvx {

namespace {

std::string_view fileOf(LinkPurpose purpose)
{
    switch (purpose) {
    case LinkPurpose::MoneyIn:
        return "money-in.html";
    case LinkPurpose::MoneyOut:
        return "money-out.html";
    case LinkPurpose::OpenAccount:
        break;
    }
    return "card.html";
}

std::string addressesJson(std::string_view in, std::string_view out)
{
    JsonText json;
    json.open('{').key("in").text(in).key("out").text(out);
    return json.close('}').take();
}

} // namespace

CardPaths::CardPaths(AccountDesk &desk, const SessionGate &gate, const PublicAddress &address,
                     const WireAnswers &answers)
    : m_desk(desk), m_gate(gate), m_address(address), m_answers(answers)
{
}

void CardPaths::handle(PathCall call) const
{
    if (call.kind == PathKind::QrCode) {
        auto picture = qrCode(call.request);
        call.responder.answer(picture ? std::move(*picture) : m_answers.unknownCode());
        return;
    }
    auto asked = m_gate.ask(call.request);
    if (auto *refusal = std::get_if<HttpAnswer>(&asked))
        call.responder.answer(std::move(*refusal));
    else
        showCard(std::move(call), std::get<SignedIn>(asked).account);
}

void CardPaths::showCard(PathCall call, AccountId account) const
{
    ParameterReader read(call.request.query);
    const bool fits = read.protocolFits();
    const bool addresses = read.integer("addresses", 1, 1).has_value();
    if (!fits || !read.fault().empty())
        call.responder.answer(m_answers.misread(read));
    else if (addresses)
        makeAddresses(std::move(call), account);
    else if (const auto card = m_desk.cardOf(account))
        call.responder.answer(m_answers.doneWith(cardJson(m_address.baseFor(call.request), *card)));
    else
        makeCode(std::move(call), account);
}

std::string CardPaths::cardJson(const std::string &base, const BankCard &card) const
{
    JsonText json;
    json.open('{').key("bound").boolean(true);
    json.key("picturePrefix").text(base + "/bank/").key("pictureName").text(card.bank);
    json.key("pictureSuffix").text("png").key("tail").text(card.tail);
    return json.close('}').take();
}

std::string CardPaths::addressOf(const std::string &base, LinkPurpose purpose,
                                 std::string_view token) const
{
    return base + '/' + m_desk.platform() + '/' + std::string(fileOf(purpose))
        + "?s=" + std::string(token);
}

void CardPaths::makeCode(PathCall call, AccountId account) const
{
    const auto responder = std::make_shared<HttpResponder>(std::move(call.responder));
    const std::string base = m_address.baseFor(call.request);
    m_desk.makeLink(
        {LinkPurpose::OpenAccount, account, call.market.prefix()},
        [this, responder, base, account](const AccountAnswer &answer) {
            // The card may have been bound a moment ago.
            const auto card
                = answer.status == AccountStatus::CardBound ? m_desk.cardOf(account) : std::nullopt;
            if (card) {
                responder->answer(m_answers.doneWith(cardJson(base, *card)));
            } else if (answer.status != AccountStatus::Done) {
                responder->answer(accountRefusal(m_answers, answer.status, answer.wait));
            } else {
                JsonText json;
                json.open('{').key("bound").boolean(false).key("code").text(answer.token.text());
                responder->answer(m_answers.doneWith(json.close('}').take()));
            }
        });
}

void CardPaths::makeAddresses(PathCall call, AccountId account) const
{
    const auto responder = std::make_shared<HttpResponder>(std::move(call.responder));
    const std::string base = m_address.baseFor(call.request);
    const std::string market = call.market.prefix();
    const auto refuse = [this, responder](const AccountAnswer &answer) {
        responder->answer(accountRefusal(m_answers, answer.status, answer.wait));
    };
    // Whoever has no card yet is led to the page that binds one.
    const bool bound = m_desk.cardOf(account).has_value();
    const LinkPurpose first = bound ? LinkPurpose::MoneyIn : LinkPurpose::OpenAccount;
    m_desk.makeLink({first, account, market}, [=](const AccountAnswer &one) {
        if (one.status != AccountStatus::Done) {
            refuse(one);
            return;
        }
        const std::string in = addressOf(base, first, one.token.text());
        if (!bound) {
            responder->answer(m_answers.doneWith(addressesJson(in, in)));
            return;
        }
        m_desk.makeLink({LinkPurpose::MoneyOut, account, market}, [=](const AccountAnswer &two) {
            if (two.status != AccountStatus::Done)
                refuse(two);
            else
                responder->answer(m_answers.doneWith(
                    addressesJson(in, addressOf(base, LinkPurpose::MoneyOut, two.token.text()))));
        });
    });
}

std::optional<HttpAnswer> CardPaths::qrCode(const HttpRequest &request) const
{
    const std::string *code = request.query.find("s");
    if (!code)
        return std::nullopt;
    const LinkState link = m_desk.link(*code);
    if (link.kind != LinkState::Live || link.purpose != LinkPurpose::OpenAccount)
        return std::nullopt;
    HttpAnswer answer = HttpAnswer::of(
        200, qrPicture(addressOf(m_address.baseFor(request), link.purpose, *code)));
    answer.contentType = "image/png";
    return answer;
}

} // namespace zvx
