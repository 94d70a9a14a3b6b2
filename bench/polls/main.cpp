// What polls cost the service: those that find nothing new, and a thousand that are told of a
// change. See ../README.md for the figures and what they mean.

#include "measures.h"

#include "support/report.h"

#include <CLI/CLI.hpp>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <exception>

int main(int argc, char **argv)
{
    Options options;
    CLI::App app("Measures polls of the exchange beside bare loops. Ends with 1 when an answer is "
                 "not what it has to be.",
                 "bench_polls");
    app.add_option("--rounds", options.rounds, "Pairs of measurements a line, at least 5")
        ->capture_default_str();
    app.add_option("--folder", options.folder, "Where the state folders are made");
    app.add_option("--only", options.parts,
                   "Parts to run, with commas between: nothing, builds, bytes, told, orders")
        ->delimiter(',');
    app.add_flag("--quick", options.quick, "Two rounds of little, to see that all of it runs");
    CLI11_PARSE(app, argc, argv);
    options.rounds = options.quick ? 2 : std::max(5, options.rounds);

    // Each client is a descriptor.
    rlimit files{};
    ::getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &files);

    struct Part {
        const char *name;
        void (*measure)(const Options &, Report &, Failures &);
    };
    constexpr Part parts[] = {{"nothing", measureNothingNew},
                              {"builds", measureBuilds},
                              {"bytes", measureBytes},
                              {"told", measureTelling},
                              {"orders", measureOrdersMeanwhile}};
    std::printf("%d rounds; medians\n\n", options.rounds);
    Report report;
    Failures failures;
    for (const Part &part : parts) {
        const bool isWanted = options.parts.empty()
            || std::find(options.parts.begin(), options.parts.end(), part.name)
                != options.parts.end();
        if (!isWanted)
            continue;
        try {
            part.measure(options, report, failures);
        } catch (const std::exception &error) {
            failures.push_back(std::string(part.name) + ": " + error.what());
        }
    }
    for (const std::string &failure : failures)
        std::fprintf(stderr, "bench_polls: %s\n", failure.c_str());
    report.note(failures.empty() ? "\nEvery answer was as expected."
                                 : "\nNOT EQUAL: the figures above count nothing.");
    return failures.empty() ? 0 : 1;
}
