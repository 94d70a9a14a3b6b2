#include "exchange/service/delivery_paths.h"

#include "exchange/accounts/parcel_book.h"
#include "exchange/service/action_form.h"
#include "exchange/service/delivery_fields.h"
#include "exchange/service/delivery_refusal.h"
#include "exchange/service/json_text.h"
#include "exchange/service/key_text.h"
#include "exchange/service/parameters.h"
#include "exchange/service/query_pool.h"
#include "exchange/service/record_json.h"
#include "exchange/service/record_question.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketreader.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace zvx {

namespace {

/// How clients number what became of a request.
std::int64_t stateNumber(DeliveryStage stage)
{
    switch (stage) {
    case DeliveryStage::Cancelled:
        return 1;
    case DeliveryStage::Requested:
        return 2;
    case DeliveryStage::Preparing:
        return 3;
    case DeliveryStage::Sent:
        return 4;
    case DeliveryStage::Refused:
        return 5;
    }
    return 5;
}

/// Who receives it stands in the book of parcels, from which the operator may have taken it out.
void writeTake(JsonText &json, const DeliveryRow &row, const std::optional<Parcel> &known,
               const MarketSnapshot &market)
{
    const Parcel parcel = known.value_or(Parcel());
    const bool isSent = row.stage == DeliveryStage::Sent;
    // The book learns of the sending a moment before the market.
    const Tracking tracking = isSent ? parcel.tracking : Tracking();
    json.open('{').key("id").text(keyText(row.parcel));
    json.key("number").text(std::to_string(row.number.value()));
    json.key("time").number(row.askedAt.value());
    writeCollection(json, row.collection, market);
    json.key("quantity").number(row.quantity.value());
    json.key("state").number(stateNumber(row.stage));
    json.key("person").text(parcel.recipient.person);
    json.key("phone").text(parcel.recipient.phone);
    json.key("address").text(parcel.recipient.address);
    json.key("carrier").text(tracking.carrier).key("tracking").text(tracking.number);
    json.key("sent");
    if (isSent)
        json.number(row.movedAt.value());
    else
        json.null();
    json.close('}');
}

} // namespace

DeliveryPaths::DeliveryPaths(const WireAnswers &answers, QueryPool &queries, DeliveryDesk &desk,
                             ParcelBook &parcels)
    : m_answers(answers), m_queries(queries), m_desk(desk), m_parcels(parcels)
{
}

void DeliveryPaths::handle(PathCall call, AccountId account)
{
    switch (call.kind) {
    case PathKind::Take:
        act(std::move(call), account);
        break;
    case PathKind::TakeShown:
        show(std::move(call), account);
        break;
    default:
        list(std::move(call), account);
        break;
    }
}

void DeliveryPaths::act(PathCall call, AccountId account)
{
    auto read = readActionForm(call.request, m_answers);
    if (auto *refusal = std::get_if<HttpAnswer>(&read)) {
        call.responder.answer(std::move(*refusal));
        return;
    }
    const ActionForm &form = std::get<ActionForm>(read);
    if (form.resolve)
        m_desk.resolve(account, call.market, form.key, answering(std::move(call.responder)));
    else if (form.fields.find("cancel"))
        cancel(call.market, account, form, std::move(call.responder));
    else
        request(call.market, account, form, std::move(call.responder));
}

void DeliveryPaths::cancel(MarketServer &market, AccountId account, const ActionForm &form,
                           HttpResponder responder)
{
    const auto parcel = readParcelId(*form.fields.find("cancel"));
    if (!parcel) {
        responder.answer(wrong("cancel"));
        return;
    }
    m_desk.cancel(account, market, *parcel, form.key, answering(std::move(responder)));
}

void DeliveryPaths::request(MarketServer &market, AccountId account, const ActionForm &form,
                            HttpResponder responder)
{
    auto read = readDeliveryForm(form.fields);
    if (const auto *field = std::get_if<WrongDeliveryField>(&read)) {
        responder.answer(wrong(*field));
        return;
    }
    DeliveryForm &wanted = std::get<DeliveryForm>(read);
    m_desk.request(account, market, wanted.collection, wanted.quantity, std::move(wanted.recipient),
                   form.key, answering(std::move(responder)));
}

void DeliveryPaths::list(PathCall call, AccountId account)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    RecordPage page = readPage(read);
    readPeriod(read, page);
    if (!read.fault().empty()) {
        call.responder.answer(m_answers.badParameter(read.fault()));
        return;
    }
    m_queries.answer(call.market, std::move(call.responder),
                     [this, &market = call.market, account, page](MarketReader &reader) {
                         const auto snapshot = market.snapshot();
                         JsonText json;
                         json.open('{').key("takes").open('[');
                         for (const DeliveryRow &row : reader.deliveries(account, page))
                             writeTake(json, row, m_parcels.find(row.parcel), *snapshot);
                         return m_answers.doneWith(json.close(']').close('}').take());
                     });
}

void DeliveryPaths::show(PathCall call, AccountId account)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    const std::string *text = call.request.query.find("take");
    const auto parcel = text ? readParcelId(*text) : std::nullopt;
    if (!parcel) {
        call.responder.answer(m_answers.badParameter("take"));
        return;
    }
    m_queries.answer(
        call.market, std::move(call.responder),
        [this, &market = call.market, account, parcel = *parcel](MarketReader &reader) {
            const auto row = reader.deliveryOf(parcel);
            if (!row || row->account != account)
                return m_answers.envelope().refusal(
                    WireStatus::NotFound, deliveryRefusal(Status::DeliveryUnknown).message);
            JsonText json;
            writeTake(json, *row, m_parcels.find(parcel), *market.snapshot());
            return m_answers.doneWith(json.take());
        });
}

DeliveryDesk::Done DeliveryPaths::answering(HttpResponder responder) const
{
    const auto own = std::make_shared<HttpResponder>(std::move(responder));
    return [this, own](const DeliveryDesk::Outcome &outcome) { own->answer(told(outcome)); };
}

HttpAnswer DeliveryPaths::told(const DeliveryDesk::Outcome &outcome) const
{
    switch (outcome.status) {
    case DeliveryDesk::Status::Accepted:
        // A cancel has nothing to tell.
        return outcome.parcel.isNull()
            ? m_answers.doneWith()
            : m_answers.doneWith("{\"id\":\"" + keyText(outcome.parcel) + "\"}");
    case DeliveryDesk::Status::Busy:
        return m_answers.busy();
    case DeliveryDesk::Status::Failed:
        return m_answers.stopping();
    case DeliveryDesk::Status::Refused:
        break;
    }
    return m_answers.refused(outcome.reason, outcome.message);
}

HttpAnswer DeliveryPaths::wrong(std::string_view field) const
{
    const std::string_view sentence = deliveryFieldSentence(field);
    return sentence.empty() ? m_answers.badParameter(field)
                            : m_answers.envelope().refusal(WireStatus::BadRequest, sentence, field);
}

} // namespace zvx
