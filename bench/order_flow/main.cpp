// How many orders the exchange takes, and how soon it answers, beside the plainest ways to do the
// same. See ../README.md for the figures and what they mean.

#include "durable.h"
#include "matching.h"
#include "replay.h"

#include "support/report.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

namespace {

bool wants(const Options &options, const char *part)
{
    return options.parts.empty()
        || std::find(options.parts.begin(), options.parts.end(), part) != options.parts.end();
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    CLI::App app("Measures matching, durable orders and replay beside their twins. Ends with 1 "
                 "when two sides do not do the same.",
                 "bench_order_flow");
    app.add_option("--rounds", options.rounds, "Pairs of measurements a line, at least 5")
        ->capture_default_str();
    app.add_option("--seed", options.seed, "Where chance begins")->capture_default_str();
    app.add_option("--commands", options.commands, "Commands of the matching stream")
        ->capture_default_str();
    app.add_option("--only", options.parts,
                   "Parts to run, with commas between: matching, durable, idle, replay")
        ->delimiter(',');
    app.add_option("--folder", options.folder, "Where the stores are made: the disk to measure");
    app.add_flag("--quick", options.quick, "Two rounds of little, to see that all of it runs");
    CLI11_PARSE(app, argc, argv);
    options.rounds = options.quick ? 2 : std::max(5, options.rounds);
    if (options.quick)
        options.commands = std::min<std::size_t>(options.commands, 100'000);

    std::printf("seed %llu, %d rounds; medians\n\n", static_cast<unsigned long long>(options.seed),
                options.rounds);
    Report report;
    Failures failures;
    if (wants(options, "matching"))
        measureMatching(options, report, failures);
    if (wants(options, "durable"))
        measureDurableOrders(options, report, failures);
    if (wants(options, "idle"))
        measureIdleOrder(options, report, failures);
    if (wants(options, "replay"))
        measureReplay(options, report, failures);
    for (const std::string &failure : failures)
        std::fprintf(stderr, "bench_order_flow: %s\n", failure.c_str());
    report.note(failures.empty() ? "\nEqual throughout: answers, deals, balances, books, hashes."
                                 : "\nNOT EQUAL: the figures above count nothing.");
    return failures.empty() ? 0 : 1;
}
