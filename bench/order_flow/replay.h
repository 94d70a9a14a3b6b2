#pragma once

#include "options.h"

class Report;

// Makes a market again from all of its stored events.
void measureReplay(const Options &options, Report &report, Failures &failures);
