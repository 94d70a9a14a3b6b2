#pragma once

#include "ZvModelKit/zvubkline.h"

#include <vector>

// Milliseconds on the clock from the change of collection and page, as a click on a row makes it,
// to the first painted chart with figures: through feed, kit and decoder's thread. The exchange
// answers at once; only the socket is left out. One figure for each of so many clicks on a chart
// that was hidden; empty where one did not end.
std::vector<double> clicksToChart(const ZvUBKLine &line, int clicks);
