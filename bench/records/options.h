#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What a run is asked for.
struct Options {
    int rounds = 9;
    std::int64_t records = 1'000'000; // orders of one account, each with a deal
    std::string folder; // where the state folder is made; empty for that of temporary files
    bool quick = false;
};

// Sentences about what did not hold; a run with any of them has no figures worth reading.
using Failures = std::vector<std::string>;
