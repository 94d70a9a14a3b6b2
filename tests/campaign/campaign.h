#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace campaign {

/** How often each thing happened that a campaign is there for. */
using Counts = std::map<std::string, std::int64_t>;

/** What went wrong, in words, or nothing. */
using Failure = std::optional<std::string>;

/** Bugs that a build can plant in what it tests, each by name. */
struct Proof {
    /** Their names, asked for after `cleanSeeds` seeds without any. */
    std::function<std::vector<std::string>()> bugs;
    /** Plants one, or none with an empty name. */
    std::function<void(const std::string &name)> plant;
    std::uint64_t cleanSeeds = 2; ///< that have to pass before
    std::uint64_t tries = 10; ///< seeds in which a bug has to be found
};

/**
 * One promise, tried under faults in many lives. Everything that is left to chance in a life comes
 * from its seed.
 */
struct Campaign {
    std::string subject; ///< "power cuts of a market's store"
    std::uint64_t seeds = 1; ///< of a run without options
    std::uint64_t enough = 1; ///< so many seeds, and no count may be 0 any more
    Counts counts; ///< every name that must have a count in the end, with 0
    /** Lives through one seed. What it throws is a failure as well. */
    std::function<Failure(std::uint64_t seed, Counts &counts)> live;
    /** Nothing in a build without fault points. */
    std::optional<Proof> proof;
};

/**
 * The body of main(): runs the seeds that the options name and tells what happened, with the
 * command that repeats a failure; or shows with --prove that each planted bug would be found.
 * Returns the exit code: 0 where all is well, 1 otherwise, 2 for wrong options.
 *
 *     --first SEED   where to begin, 1 without it
 *     --seeds N      how many
 *     --minutes M    runs on until the time is over, instead of a number of seeds
 *     --prove        plants one bug after the other
 */
int run(const Campaign &campaign, int argc, char **argv);

} // namespace campaign
