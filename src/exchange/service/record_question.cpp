#include "exchange/service/record_question.h"

#include "exchange/service/parameters.h"

namespace zvx {

namespace {

constexpr std::int64_t lastPage = INT32_MAX;
constexpr std::int64_t largestPage = 200;

} // namespace

std::variant<RecordQuestion, std::string> readRecordQuestion(const HttpParameters &parameters)
{
    ParameterReader read(parameters);
    RecordQuestion question;
    question.page = read.integer("page", 1, lastPage).value_or(question.page);
    question.size = read.integer("size", 1, largestPage).value_or(question.size);
    question.kind
        = static_cast<RecordQuestion::Kind>(read.integer("type", 0, 2).value_or(question.kind));
    question.first = read.dayBound("start").value_or(question.first);
    question.last = read.dayBound("stop").value_or(question.last);
    if (!read.fault().empty())
        return read.fault();
    return question;
}

} // namespace zvx
