#pragma once

#include "exchange/core/types.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zvx {

struct Bar;
struct DealRow;
struct SessionMinutes;

/// Each gives the `data` of a path of PathRoom::Charts, as docs/protocol.md describes it.
std::string minutesJson(const SessionMinutes &session);
std::string barsJson(CollectionId collection, Sequence session, const std::vector<Bar> &bars);
std::string dealsJson(CollectionId collection, std::int64_t page,
                      const std::vector<DealRow> &deals);

} // namespace zvx
