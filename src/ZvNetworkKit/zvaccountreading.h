#pragma once

#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubgatherinfo.h"
#include "ZvModelKit/zvubmyacount.h"

#include <QStringList>

struct ZvJsonNode;

// Readers of what belongs to an account. They throw ZvRefusal where an answer is not as the
// protocol has it.
namespace zvread {

ZvUBMyAcount account(const ZvJsonNode &data);
ZvUBCapInfo cap(const ZvJsonNode &data);
ZvUBGatherInfo gather(const ZvJsonNode &data);

// What may stand in a header after "Bearer".
QString token(const ZvJsonNode &object, const char *key);

// The ids of collections, each of them once; none is that of a composite row.
QStringList collectionIds(const ZvJsonNode &node, const char *key);

} // namespace zvread
