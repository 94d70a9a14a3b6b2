#include "campaign/campaign.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace campaign {

namespace {

using Number = unsigned long long;

struct Options {
    std::uint64_t first = 1;
    std::uint64_t seeds = 0;
    double minutes = 0;
    bool prove = false;
};

/** Reads a number from the argument after `i`; false where there is none. */
template <typename Value, typename Read>
bool readNext(int argc, char **argv, int &i, const Read &read, Value &value)
{
    if (i + 1 >= argc)
        return false;
    char *end = nullptr;
    value = read(argv[++i], &end);
    return end != argv[i] && *end == '\0';
}

bool parse(int argc, char **argv, Options &options)
{
    const auto whole = [](const char *text, char **end) { return std::strtoull(text, end, 10); };
    const auto real = [](const char *text, char **end) { return std::strtod(text, end); };
    for (int i = 1; i < argc; ++i) {
        bool good = true;
        if (std::strcmp(argv[i], "--prove") == 0)
            options.prove = true;
        else if (std::strcmp(argv[i], "--first") == 0)
            good = readNext(argc, argv, i, whole, options.first);
        else if (std::strcmp(argv[i], "--seeds") == 0)
            good = readNext(argc, argv, i, whole, options.seeds) && options.seeds > 0;
        else if (std::strcmp(argv[i], "--minutes") == 0)
            good = readNext(argc, argv, i, real, options.minutes) && options.minutes > 0;
        else
            good = false;
        if (!good)
            return false;
    }
    return true;
}

Failure live(const Campaign &campaign, std::uint64_t seed, Counts &counts)
{
    try {
        return campaign.live(seed, counts);
    } catch (const std::exception &error) {
        return std::string(error.what());
    }
}

int runSeeds(const Campaign &campaign, const char *program, const Options &options)
{
    const auto begin = std::chrono::steady_clock::now();
    const auto elapsed = [begin] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    const std::uint64_t wanted = options.seeds > 0 ? options.seeds : campaign.seeds;
    std::printf("%s, first seed %llu\n", campaign.subject.c_str(), Number(options.first));
    Counts counts = campaign.counts;
    std::uint64_t done = 0;
    while (options.minutes > 0 ? elapsed() < options.minutes * 60 : done < wanted) {
        const std::uint64_t seed = options.first + done;
        if (const Failure failure = live(campaign, seed, counts)) {
            std::printf("seed %llu failed: %s\nrepeat it with: %s --first %llu --seeds 1\n",
                        Number(seed), failure->c_str(), program, Number(seed));
            return 1;
        }
        ++done;
    }
    bool complete = true;
    for (const auto &[what, count] : counts) {
        std::printf("  %10lld  %s\n", static_cast<long long>(count), what.c_str());
        // A few seeds that repeat a failure need not show everything.
        if (count == 0 && done >= campaign.enough) {
            std::printf("what never happened was not tested: %s\n", what.c_str());
            complete = false;
        }
    }
    std::printf("%llu seeds in %.1f s; repeat them with: %s --first %llu --seeds %llu\n",
                Number(done), elapsed(), program, Number(options.first), Number(done));
    return complete ? 0 : 1;
}

int prove(const Campaign &campaign, const Options &options)
{
    const Proof &proof = *campaign.proof;
    Counts counts;
    for (std::uint64_t i = 0; i < proof.cleanSeeds; ++i) {
        if (const Failure failure = live(campaign, options.first + i, counts)) {
            std::printf("seed %llu fails without a planted bug: %s\n", Number(options.first + i),
                        failure->c_str());
            return 1;
        }
    }
    const std::vector<std::string> bugs = proof.bugs();
    int missed = 0;
    for (const std::string &bug : bugs) {
        proof.plant(bug);
        std::uint64_t tried = 0;
        Failure failure;
        while (!failure && tried < proof.tries)
            failure = live(campaign, options.first + tried++, counts);
        if (failure)
            std::printf("found   %-34s seed %llu: %s\n", bug.c_str(),
                        Number(options.first + tried - 1), failure->c_str());
        else
            std::printf("MISSED  %s\n", bug.c_str());
        missed += failure ? 0 : 1;
    }
    proof.plant({});
    std::printf("%zu planted bugs, %d missed\n", bugs.size(), missed);
    return missed > 0 || bugs.empty() ? 1 : 0;
}

} // namespace

int run(const Campaign &campaign, int argc, char **argv)
{
    // What was said before a crash is worth as much as the rest.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Options options;
    if (!parse(argc, argv, options)) {
        std::printf("usage: %s [--first SEED] [--seeds N | --minutes M] [--prove]\n", argv[0]);
        return 2;
    }
    if (!options.prove)
        return runSeeds(campaign, argv[0], options);
    if (!campaign.proof) {
        std::printf("this build has no fault points\n");
        return 2;
    }
    return prove(campaign, options);
}

} // namespace campaign
