#pragma once

#include "exchange/store/bars.h"
#include "exchange/store/tables.h"

#include <vector>

namespace zvx {

/**
 * The trading days of a collection before its first session, for markets that show a history: one
 * bar for each weekday from 2016-01-04 to 2019-12-31, by rising day.
 *
 * A pure function of the collection's id and of how it was listed first, in whole numbers, so that
 * nothing of it is stored and every machine and every release shows the same. Each price lies
 * within the daily limits that follow from the close before, and the last close is the one that the
 * collection was listed with. Nothing for a collection without pieces.
 */
std::vector<Bar> pastTrading(const IssueRow &issue);

} // namespace zvx
