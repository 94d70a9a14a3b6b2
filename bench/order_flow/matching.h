#pragma once

#include "options.h"

class Report;

// The core beside its twin, both on the same stream of commands.
void measureMatching(const Options &options, Report &report, Failures &failures);
