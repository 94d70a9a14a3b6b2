#pragma once

#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubtopfive.h"

namespace zvtest {

// A quote of 庚申猴票 whose figures all differ, around a previous close of 100.00.
ZvUBTopFive::Data quoteData(const QString &id);

// Figures of a day that all differ.
ZvUBProItem::Data dayData(const QString &id);

// The longest figures that a market may bring.
ZvUBTopFive::Data longestQuoteData(const QString &id);
ZvUBProItem::Data longestDayData(const QString &id);

} // namespace zvtest
