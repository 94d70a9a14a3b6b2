#pragma once

#include "ZvModelKit/zvubkline.h"
#include "ZvModelKit/zvubtimeline.h"

struct ZvJsonNode;

// Readers of a chart's figures. They throw ZvRefusal where an answer is not as the protocol has it,
// or where its minutes or bars are not in order.
namespace zvread {

ZvUBTimeLine timeLine(const ZvJsonNode &data);
ZvUBKLine kLine(const ZvJsonNode &data);

} // namespace zvread
