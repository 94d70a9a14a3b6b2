#pragma once

#include "options.h"

class Report;

// Orders of many clients, each answered when it is durable, beside a table that gets one row a
// commit and beside commits of a hundred orders' rows at a time.
void measureDurableOrders(const Options &options, Report &report, Failures &failures);

// One order on an idle market, beside a commit of the same rows.
void measureIdleOrder(const Options &options, Report &report, Failures &failures);
