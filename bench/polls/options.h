#pragma once

#include <string>
#include <vector>

// What a run is asked for.
struct Options {
    int rounds = 7;
    std::string folder; // where the state folders are made; empty for that of temporary files
    bool quick = false;
    std::vector<std::string> parts; // all of them when it is empty
};

// Sentences about what did not hold; a run with any of them has no figures worth reading.
using Failures = std::vector<std::string>;
