#include "exchange/core/faults.h"
#include "exchange/core/simulation.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

// Runs many lives of a market; with --prove it shows that each planted bug would be seen.

namespace {

struct Options {
    std::uint64_t first = 1;
    std::uint64_t seeds = 2000;
    double minutes = 0; ///< runs on until the time is over, instead of a number of seeds
    bool prove = false;
};

bool parse(int argc, char **argv, Options &options)
{
    for (int i = 1; i < argc; ++i) {
        const bool more = i + 1 < argc;
        if (std::strcmp(argv[i], "--prove") == 0)
            options.prove = true;
        else if (std::strcmp(argv[i], "--first") == 0 && more)
            options.first = std::strtoull(argv[++i], nullptr, 10);
        else if (std::strcmp(argv[i], "--seeds") == 0 && more)
            options.seeds = std::strtoull(argv[++i], nullptr, 10);
        else if (std::strcmp(argv[i], "--minutes") == 0 && more)
            options.minutes = std::strtod(argv[++i], nullptr);
        else
            return false;
    }
    return true;
}

int simulate(const char *program, const Options &options)
{
    const auto begin = std::chrono::steady_clock::now();
    const auto elapsed = [begin] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    std::printf("simulation of the market, first seed %llu\n",
                static_cast<unsigned long long>(options.first));
    Counts counts = emptyCounts();
    std::uint64_t done = 0;
    while (options.minutes > 0 ? elapsed() < options.minutes * 60 : done < options.seeds) {
        const std::uint64_t seed = options.first + done;
        if (const auto failure = liveThrough(seed, counts)) {
            std::printf("seed %llu failed: %s\nrepeat it with: %s --first %llu --seeds 1\n",
                        static_cast<unsigned long long>(seed), failure->c_str(), program,
                        static_cast<unsigned long long>(seed));
            return 1;
        }
        ++done;
    }
    bool complete = true;
    for (const auto &[what, count] : counts) {
        std::printf("  %10lld  %s\n", static_cast<long long>(count), what.c_str());
        // A few seeds that repeat a failure need not show everything.
        if (count == 0 && done >= 100) {
            std::printf("what never happened was not tested: %s\n", what.c_str());
            complete = false;
        }
    }
    std::printf("%llu seeds in %.1f s\n", static_cast<unsigned long long>(done), elapsed());
    return complete ? 0 : 1;
}

#ifdef ZVX_FAULTS
int prove(const Options &options)
{
    constexpr std::uint64_t kTries = 400;
    Counts counts;
    for (std::uint64_t seed = options.first; seed < options.first + 50; ++seed) {
        if (const auto failure = liveThrough(seed, counts)) {
            std::printf("seed %llu fails without a planted bug: %s\n",
                        static_cast<unsigned long long>(seed), failure->c_str());
            return 1;
        }
    }
    const auto points = zvx::faultPoints();
    int missed = 0;
    for (const std::string_view point : points) {
        zvx::plantFault(point);
        std::uint64_t seed = options.first;
        std::optional<std::string> failure;
        while (!failure && seed < options.first + kTries)
            failure = liveThrough(seed++, counts);
        if (failure)
            std::printf("found   %-32s seed %llu: %s\n", std::string(point).c_str(),
                        static_cast<unsigned long long>(seed - 1), failure->c_str());
        else
            std::printf("MISSED  %s\n", std::string(point).c_str());
        missed += !failure;
    }
    zvx::plantFault({});
    std::printf("%zu planted bugs, %d missed\n", points.size(), missed);
    return missed > 0 || points.empty() ? 1 : 0;
}
#else
int prove(const Options &)
{
    std::printf("this build has no fault points; use zvx_core_prove\n");
    return 2;
}
#endif

} // namespace

int main(int argc, char **argv)
{
    Options options;
    if (!parse(argc, argv, options)) {
        std::printf("usage: %s [--first SEED] [--seeds N | --minutes N] [--prove]\n", argv[0]);
        return 2;
    }
    return options.prove ? prove(options) : simulate(argv[0], options);
}
