#include "exchange/service/chart_json.h"

#include "exchange/service/chart_figures.h"
#include "exchange/service/json_text.h"
#include "exchange/service/market_json.h"
#include "exchange/store/marketreader.h"

namespace zvx {

namespace {

std::string idText(CollectionId collection)
{
    return std::to_string(collection.value());
}

} // namespace

std::string minutesJson(const SessionMinutes &session)
{
    const RunningRow &running = session.running;
    JsonText json;
    json.open('{').key("id").text(idText(running.collection));
    json.key("tradingDay").text(dayText(running.day));
    json.key("session").number(running.session.value());
    json.key("previousClose").number(running.previousClose.value());
    json.key("spans").open('[');
    for (const OpenSpan &span : openSpans(session)) {
        json.open('[').number(span.begin.value());
        if (span.end)
            json.number(span.end->value());
        else
            json.null();
        json.close(']');
    }
    json.close(']').key("minutes").open('[');
    for (const MinuteFigures &minute : minuteFigures(session)) {
        json.open('[').number(minute.begin.value()).number(minute.price.value());
        json.number(minute.average.value()).number(minute.volume.value()).close(']');
    }
    return json.close(']').close('}').take();
}

std::string barsJson(CollectionId collection, Sequence session, const std::vector<Bar> &bars)
{
    JsonText json;
    json.open('{').key("id").text(idText(collection));
    json.key("session").number(session.value()).key("bars").open('[');
    for (const Bar &bar : bars) {
        json.open('[').text(dayText(bar.day)).number(bar.open.value()).number(bar.high.value());
        json.number(bar.low.value()).number(bar.close.value());
        json.number(bar.volume.value()).number(bar.amount.value()).close(']');
    }
    return json.close(']').close('}').take();
}

std::string dealsJson(CollectionId collection, std::int64_t page, const std::vector<DealRow> &deals)
{
    JsonText json;
    json.open('{').key("id").text(idText(collection));
    json.key("page").number(page).key("deals").open('[');
    for (const DealRow &row : deals)
        writeDeal(json, dealSnapshot(row.deal));
    return json.close(']').close('}').take();
}

} // namespace zvx
