#include "exchange/service/record_paths.h"

#include "exchange/service/cap_figures.h"
#include "exchange/service/json_text.h"
#include "exchange/service/parameters.h"
#include "exchange/service/query_pool.h"
#include "exchange/service/record_json.h"
#include "exchange/service/record_question.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketreader.h"

#include <string>
#include <utility>

namespace zvx {

namespace {

/// The fields by which a path chooses records, beside the page.
bool hasKind(PathKind kind)
{
    return kind == PathKind::OrdersOfSession || kind == PathKind::Orders || kind == PathKind::Deals;
}

bool hasPeriod(PathKind kind)
{
    return kind == PathKind::Orders || kind == PathKind::Deals;
}

std::string holdingsJson(CapFigures figures, const RecordPage &page)
{
    // As many as there are collections at most, and read as a whole for their sums, too.
    cutToPage(figures.holdings, page);
    JsonText json;
    json.open('{').key("items");
    writeHoldings(json, figures.holdings);
    return json.close('}').take();
}

/// The `data` of a path.
std::string dataOf(PathKind kind, AccountId account, const RecordPage &page, MarketReader &reader,
                   const MarketSnapshot &market)
{
    switch (kind) {
    case PathKind::OpenOrders:
        return ordersJson(reader.openOrders(account, page), market);
    case PathKind::OrdersOfSession:
        return ordersJson(reader.ordersOfSession(account, page), market);
    case PathKind::Orders:
        return ordersJson(reader.ordersOf(account, page), market);
    case PathKind::Deals:
        return accountDealsJson(reader.dealsOf(account, page), market);
    case PathKind::Gather:
        return gathersJson(reader.gathers(account), market);
    default:
        return holdingsJson(capFigures(reader.account(account), market), page);
    }
}

} // namespace

RecordPaths::RecordPaths(const WireAnswers &answers, QueryPool &queries)
    : m_answers(answers), m_queries(queries)
{
}

void RecordPaths::handle(PathCall call, AccountId account)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    RecordPage page;
    if (call.kind != PathKind::Gather)
        page = readPage(read);
    if (hasKind(call.kind))
        readKind(read, page);
    if (hasPeriod(call.kind))
        readPeriod(read, page);
    if (!read.fault().empty()) {
        call.responder.answer(m_answers.badParameter(read.fault()));
        return;
    }
    const auto question = [&answers = m_answers, &market = call.market, kind = call.kind, account,
                           page](MarketReader &reader) {
        return answers.doneWith(dataOf(kind, account, page, reader, *market.snapshot()));
    };
    m_queries.answer(call.market, std::move(call.responder), question);
}

} // namespace zvx
