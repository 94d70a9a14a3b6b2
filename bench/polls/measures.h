#pragma once

#include "options.h"

class Report;

// Server CPU of a poll that finds nothing new, beside a bare epoll loop.
void measureNothingNew(const Options &options, Report &report, Failures &failures);

// How often JSON is made while a thousand clients poll and the market changes.
void measureBuilds(const Options &options, Report &report, Failures &failures);

// The bytes of a tick beside those of the whole list.
void measureBytes(const Options &options, Report &report, Failures &failures);

// How soon a thousand parked polls are told of a change, beside a bare loop that sends.
void measureTelling(const Options &options, Report &report, Failures &failures);

// How long orders take while a thousand polls are told of changes, beside a service without polls.
void measureOrdersMeanwhile(const Options &options, Report &report, Failures &failures);
