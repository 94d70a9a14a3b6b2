#pragma once

#include "exchange/store/recordpage.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace zvx {

class ParameterReader;

// Which of an account's records somebody asks for, read from the parameters of the question. What
// is wrong is the reader's fault.

/// `page` and `size`: everything from any day, so far.
RecordPage readPage(ParameterReader &read);
/// `type`.
void readKind(ParameterReader &read, RecordPage &page);
/// `start` and `stop`.
void readPeriod(ParameterReader &read, RecordPage &page);

/// Leaves the rows of a page of a list that is at hand as a whole.
template <typename Row>
void cutToPage(std::vector<Row> &rows, const RecordPage &page)
{
    const auto count = static_cast<std::int64_t>(rows.size());
    const std::int64_t first = std::min((page.page - 1) * page.size, count);
    const std::int64_t end = std::min(first + page.size, count);
    rows.erase(rows.begin() + end, rows.end());
    rows.erase(rows.begin(), rows.begin() + first);
}

} // namespace zvx
