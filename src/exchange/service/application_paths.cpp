#include "exchange/service/application_paths.h"

#include "exchange/accounts/account_desk.h"
#include "exchange/service/account_refusal.h"
#include "exchange/service/application_file.h"
#include "exchange/service/json_text.h"
#include "exchange/service/parameters.h"
#include "exchange/service/record_question.h"
#include "exchange/service/session_gate.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <variant>

namespace zvx {

namespace {

/// The fields that an issue and an application share.
template <typename Entry>
void writeCollection(JsonText &json, const Entry &entry)
{
    json.key("collection").text(std::to_string(entry.collection.value()));
    json.key("code").text(entry.code).key("name").text(entry.name);
    json.key("price").number(entry.price.value());
    json.key("quantity").number(entry.quantity.value());
}

std::string openJson(const std::vector<const OpenIssue *> &issues)
{
    JsonText json;
    json.open('{').key("collections").open('[');
    for (const OpenIssue *issue : issues) {
        json.open('{');
        writeCollection(json, *issue);
        json.key("from").text(dayText(issue->from)).key("to").text(dayText(issue->to)).close('}');
    }
    return json.close(']').close('}').take();
}

std::string mineJson(const std::vector<const Application *> &applications)
{
    JsonText json;
    json.open('{').key("applications").open('[');
    for (const Application *application : applications) {
        json.open('{').key("number").number(application->number);
        json.key("time").number(application->time.value());
        writeCollection(json, *application);
        json.key("granted");
        if (application->granted)
            json.number(application->granted->value());
        else
            json.null();
        json.key("state").number(static_cast<std::int64_t>(application->state)).close('}');
    }
    return json.close(']').close('}').take();
}

} // namespace

ApplicationPaths::ApplicationPaths(AccountDesk &desk, const SessionGate &gate,
                                   const ApplicationFile &file, const WireAnswers &answers)
    : m_desk(desk), m_gate(gate), m_file(file), m_answers(answers)
{
}

void ApplicationPaths::handle(PathCall call)
{
    if (!call.request.query.find("mine")) {
        showOpen(std::move(call));
        return;
    }
    auto asked = m_gate.ask(call.request);
    if (auto *refusal = std::get_if<HttpAnswer>(&asked))
        call.responder.answer(std::move(*refusal));
    else
        showMine(std::move(call), std::get<SignedIn>(asked).account);
}

void ApplicationPaths::showOpen(PathCall call)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    const RecordPage page = readPage(read);
    if (!read.fault().empty()) {
        call.responder.answer(m_answers.badParameter(read.fault()));
        return;
    }
    const auto market = m_file.of(call.market.prefix());
    std::vector<const OpenIssue *> open = market->openOn(call.market.snapshot()->check.data->day);
    cutToPage(open, page);
    call.responder.answer(m_answers.doneWith(openJson(open)));
}

void ApplicationPaths::showMine(PathCall call, AccountId account)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    read.integer("mine", 1, 1);
    RecordPage page = readPage(read);
    readPeriod(read, page);
    if (!read.fault().empty()) {
        call.responder.answer(m_answers.badParameter(read.fault()));
        return;
    }
    m_desk.profile(account,
                   [&answers = m_answers, market = m_file.of(call.market.prefix()), page,
                    responder = std::make_shared<HttpResponder>(std::move(call.responder))](
                       const ProfileAnswer &result) {
                       if (result.status != AccountStatus::Done) {
                           responder->answer(accountRefusal(answers, result.status));
                           return;
                       }
                       auto mine = market->of(result.profile.phone, result.profile.number);
                       const auto isOutside = [&](const Application *application) {
                           return application->day < page.first || page.last < application->day;
                       };
                       mine.erase(std::remove_if(mine.begin(), mine.end(), isOutside), mine.end());
                       cutToPage(mine, page);
                       responder->answer(answers.doneWith(mineJson(mine)));
                   });
}

} // namespace zvx
