#pragma once

#include "ZvModelKit/zvubkline.h"

// A walk of so many day bars, the same for the same seed.
ZvUBKLine candles(int count, quint32 seed);

// Moves the last price by a fen or so within the range of its bar, so that no axis has to change.
void movePrice(ZvUBKLine *line, int tick);

// The mean of the closes of the last `period` bars up to this one; no number before there are any.
double averageAt(const ZvUBKLine &line, int bar, int period);
