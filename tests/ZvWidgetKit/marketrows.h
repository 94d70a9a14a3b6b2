#pragma once

#include "ZvModelKit/zvubobject.h"

#include <QList>
#include <QRandomGenerator>

namespace zvtest {

// The raw figures of one collection. Its id is `number`, its code "C" and the number; all figures
// exist. It rises, falls or stands as `number` modulo 3 is 0, 1 or 2.
ZvUBObject::Data collectionData(int number);
ZvUBObject collection(int number);

// `count` collections from number 1001 on.
QList<ZvUBObject> collections(int count);

// The composite of the market, whose id is negative.
ZvUBObject composite();

// The same collection with `fen` added to its latest price.
ZvUBObject moved(const ZvUBObject &row, qint64 fen);

// The same collections after a tick: `count` of them, picked by chance, have all new figures.
QList<ZvUBObject> tick(QList<ZvUBObject> rows, int count, QRandomGenerator &random);

} // namespace zvtest
