// What the pages of a long past cost: the last page of a million records of one account beside the
// first. See ../README.md for the figures and what they mean.

#include "longpast.h"
#include "pages.h"
#include "plainpages.h"

#include "support/report.h"
#include "support/stopwatch.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <random>

namespace {

std::string dayParameter(std::int64_t day)
{
    char text[16];
    std::snprintf(text, sizeof text, "%04d/%02d/%02d", static_cast<int>(day / 10'000),
                  static_cast<int>(day / 100 % 100), static_cast<int>(day % 100));
    return text;
}

std::vector<RecordList> listsOf(const LongPast &past)
{
    using Entry = LongPast::Entry;
    const auto all = [](const Entry &) { return true; };
    const auto buys = [](const Entry &entry) { return entry.isBuy; };
    const auto sells = [](const Entry &entry) { return !entry.isBuy; };
    // Four fifths of the days, with some before and some behind.
    const std::int64_t first = past.entries()[past.entries().size() / 10].day;
    const std::int64_t last = past.entries()[past.entries().size() * 9 / 10].day;
    const auto ofDays
        = [first, last](const Entry &entry) { return entry.day >= first && entry.day <= last; };
    const std::string days = "&type=2&start=" + dayParameter(first) + "&stop=" + dayParameter(last);
    const std::string orders = "myaccount/his-entrust.html";
    const std::string deals = "myaccount/trade.html";
    return {
        {"orders", orders, "", "orders", "order", all, &Entry::order},
        {"… buys alone", orders, "&type=1", "orders", "order", buys, &Entry::order},
        {"… of some of the days", orders, days, "orders", "order", ofDays, &Entry::order},
        {"deals", deals, "", "deals", "sequence", all, &Entry::deal},
        {"… sells alone", deals, "&type=0", "deals", "sequence", sells, &Entry::deal},
        {"… of some of the days", deals, days, "deals", "sequence", ofDays, &Entry::deal},
    };
}

std::vector<std::int64_t> wantedNumbers(const RecordList &list, const LongPast &past)
{
    std::vector<std::int64_t> numbers;
    for (const LongPast::Entry &entry : past.entries()) {
        if (list.isWanted(entry))
            numbers.push_back(entry.*list.value);
    }
    std::reverse(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<std::int64_t> cut(const std::vector<std::int64_t> &numbers, std::int64_t page)
{
    const auto count = static_cast<std::int64_t>(numbers.size());
    const std::int64_t first = std::min((page - 1) * 10, count);
    return {numbers.begin() + first, numbers.begin() + std::min(first + 10, count)};
}

void measure(const Options &options, Report &report, Failures &failures)
{
    const LongPast past(options);
    const ServiceProcess service(past.state().folder(), {"--robots", "0"});
    PageAsker asker(service, past.token());
    const int times = options.quick ? 50 : 500;
    std::mt19937_64 random(1);
    for (const RecordList &list : listsOf(past)) {
        const std::vector<std::int64_t> wanted = wantedNumbers(list, past);
        const auto last = (static_cast<std::int64_t>(wanted.size()) + 9) / 10;
        for (int i = 0; i < 40; ++i) {
            const std::int64_t page = i == 0 ? 1
                : i == 1                     ? last
                : i == 2
                ? last + 1
                : 1 + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(last));
            if (asker.page(list, page) != cut(wanted, page))
                failures.push_back(list.path + list.filter + ": page " + std::to_string(page)
                                   + " holds other records");
        }
        Pairs cpu;
        Pairs wall;
        for (int round = 0; round < options.rounds; ++round) {
            PageAsker::Cost near;
            PageAsker::Cost far;
            for (const bool isFar : {round % 2 == 0, round % 2 != 0})
                (isFar ? far : near) = asker.costOf(list, isFar ? last : 1, times);
            cpu.add(far.cpu, near.cpu);
            wall.add(far.wall, near.wall);
        }
        const std::string pages = list.what + ": page " + std::to_string(last) + " beside page 1";
        report.line(pages + ", server CPU", cpu, "us", Goal::most(2, "2"));
        report.line("… on the clock", wall, "us", Goal::most(2, "2"));
    }

    // Who counts off what is not shown pays for it.
    const ScratchFolder folder(options.folder);
    PlainPages plain(folder.path() / "plain.sqlite", past.entries());
    const RecordList all = listsOf(past).front();
    const auto last = (static_cast<std::int64_t>(past.entries().size()) + 9) / 10;
    if (plain.page(last) != asker.page(all, last))
        failures.push_back("the plain table holds other orders");
    Pairs counted;
    for (int round = 0; round < options.rounds; ++round) {
        const Stopwatch farWatch;
        plain.page(last);
        const double far = farWatch.wall() * 1000;
        const Stopwatch nearWatch;
        plain.page(1);
        counted.add(far, nearWatch.wall() * 1000);
    }
    report.line("a plain table that counts off: the same two pages, without HTTP", counted, "us");
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    CLI::App app("Measures the pages of an account's records. Ends with 1 when a page holds other "
                 "records than it has to.",
                 "bench_records");
    app.add_option("--rounds", options.rounds, "Pairs of measurements a line, at least 5")
        ->capture_default_str();
    app.add_option("--records", options.records, "Orders of the account, each with a deal")
        ->capture_default_str()
        ->check(CLI::Range(100, 10'000'000));
    app.add_option("--folder", options.folder, "Where the state folder is made");
    app.add_flag("--quick", options.quick, "Two rounds of little, to see that all of it runs");
    CLI11_PARSE(app, argc, argv);
    options.rounds = options.quick ? 2 : std::max(5, options.rounds);
    if (options.quick)
        options.records = std::min<std::int64_t>(options.records, 20'000);

    std::printf("%lld records, %d rounds; medians\n\n", static_cast<long long>(options.records),
                options.rounds);
    Report report;
    Failures failures;
    try {
        measure(options, report, failures);
    } catch (const std::exception &error) {
        failures.push_back(error.what());
    }
    for (const std::string &failure : failures)
        std::fprintf(stderr, "bench_records: %s\n", failure.c_str());
    report.note(failures.empty() ? "\nEvery page held what it has to."
                                 : "\nNOT EQUAL: the figures above count nothing.");
    return failures.empty() ? 0 : 1;
}
