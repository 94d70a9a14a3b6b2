#include "exchange/service/chart_paths.h"

#include "exchange/service/chart_json.h"
#include "exchange/service/market_board.h"
#include "exchange/service/parameters.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketreader.h"
#include "exchange/store/pasttrading.h"

#include <algorithm>

namespace zvx {

namespace {

constexpr std::int64_t mostMinutes = 5'000;
constexpr std::int64_t mostBars = 5'000;
constexpr std::int64_t usualBars = 1'000;
constexpr std::int64_t mostDealsOfPage = 5'000;
constexpr std::int64_t usualDealsOfPage = 10;
constexpr std::int64_t lastPage = INT32_MAX;

BarSpan spanOf(PathKind kind)
{
    switch (kind) {
    case PathKind::WeekBars:
        return BarSpan::Week;
    case PathKind::MonthBars:
        return BarSpan::Month;
    default:
        return BarSpan::Day;
    }
}

} // namespace

ChartPaths::ChartPaths(const WireAnswers &answers, QueryPool &queries)
    : m_answers(answers), m_queries(queries)
{
}

void ChartPaths::handle(PathCall call)
{
    ParameterReader read(call.request.query);
    if (!read.protocolFits()) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    const auto collection = read.collection();
    const CollectionId id = collection.value_or(CollectionId(0));
    QueryPool::Question question;
    if (call.kind == PathKind::Minutes)
        question = minutes(id, read);
    else if (call.kind == PathKind::DealPage)
        question = deals(id, read);
    else
        question = bars(id, call.kind, call.market.hasHistory(), read);
    if (!read.fault().empty())
        call.responder.answer(m_answers.badParameter(read.fault()));
    else if (!collection)
        call.responder.answer(m_answers.badParameter("collection"));
    else if (!call.board.rowOf(id))
        call.responder.answer(m_answers.unknownCollection());
    else
        m_queries.answer(call.market, std::move(call.responder), std::move(question));
}

QueryPool::Question ChartPaths::minutes(CollectionId id, ParameterReader &read) const
{
    const TimeMs from(read.integer("from", 0, TimeMs::most).value_or(0));
    return [&answers = m_answers, id, from](MarketReader &reader) {
        const auto session = reader.minutes(id, from, mostMinutes);
        return session ? answers.doneWith(minutesJson(*session)) : answers.unknownCollection();
    };
}

QueryPool::Question ChartPaths::bars(CollectionId id, PathKind kind, bool hasHistory,
                                     ParameterReader &read) const
{
    const auto count = read.integer("count", 1, mostBars).value_or(usualBars);
    const auto before = read.day("before");
    return [&answers = m_answers, id, span = spanOf(kind), hasHistory, count,
            before](MarketReader &reader) {
        const auto sessions = reader.sessions(id);
        if (!sessions)
            return answers.unknownCollection();
        std::vector<Bar> all = hasHistory ? pastTrading(sessions->issue) : std::vector<Bar>();
        all.insert(all.end(), sessions->bars.begin(), sessions->bars.end());
        std::vector<Bar> bars = folded(all, span);
        keepNewest(bars, before, static_cast<std::size_t>(count));
        return answers.doneWith(barsJson(id, sessions->running, bars));
    };
}

QueryPool::Question ChartPaths::deals(CollectionId id, ParameterReader &read) const
{
    const auto page = read.integer("page", 1, lastPage).value_or(1);
    const auto size = read.signedInteger("size", -INT64_MAX, mostDealsOfPage);
    return [&answers = m_answers, id, page,
            size
            = std::max<std::int64_t>(size.value_or(usualDealsOfPage), 0)](MarketReader &reader) {
        const auto deals = reader.deals(id, page, size);
        return deals ? answers.doneWith(dealsJson(id, page, *deals)) : answers.unknownCollection();
    };
}

} // namespace zvx
