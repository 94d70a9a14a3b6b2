#include "exchange/service/record_question.h"

#include "exchange/service/parameters.h"

namespace zvx {

namespace {

constexpr std::int64_t lastPage = INT32_MAX;
constexpr std::int64_t largestPage = 200;

} // namespace

RecordPage readPage(ParameterReader &read)
{
    RecordPage page;
    page.page = read.integer("page", 1, lastPage).value_or(page.page);
    page.size = read.integer("size", 1, largestPage).value_or(page.size);
    return page;
}

void readKind(ParameterReader &read, RecordPage &page)
{
    page.kind = static_cast<RecordPage::Kind>(
        read.integer("type", RecordPage::Outgoing, RecordPage::All).value_or(page.kind));
}

void readPeriod(ParameterReader &read, RecordPage &page)
{
    page.first = read.dayBound("start").value_or(page.first);
    page.last = read.dayBound("stop").value_or(page.last);
}

} // namespace zvx
