#include "exchange/service/command_line.h"

#include "exchange/service/host_names.h"
#include "exchange/service/initials.h"
#include "exchange/service/lifeline.h"
#include "exchange/service/outbox_text.h"
#include "exchange/service/parameters.h"
#include "exchange/service/public_address.h"
#include "exchange/service/service.h"
#include "exchange/service/service_log.h"
#include "exchange/store/exchange.h"
#include "exchange/store/statelock.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zvx {

namespace {

namespace fs = std::filesystem;

constexpr int exitFault = 1;
constexpr int exitUnusable = 2;

/// A hundred thousand million: clients count money in numbers that hold so much to the fen.
constexpr std::int64_t mostYuan = 100'000'000'000;
constexpr std::int64_t longestBankDelay = 86'400'000;
constexpr std::int64_t longestCarrierDelay = 31 * 86'400; // s
constexpr std::int64_t mostRobotOrders = 200; // a second
constexpr std::size_t catalogueBound = 64 * 1024 * 1024;
/// Descriptors that are not connections: stores, logs, pipes.
constexpr rlim_t otherFiles = 256;

struct Choices {
    std::string state;
    std::string listen = "127.0.0.1:0";
    std::string catalogue;
    std::vector<std::string> hosts;
    std::string publicUrl;
    std::uint64_t seed = 1;
    double robots = 6;
    std::int64_t bankDelay = 0;
    std::string bankRefuse;
    double prepareDelay = 60;
    double shipDelay = 60;
    bool carrierRefuses = false;
    std::int64_t transferLimit = MoneyLimits().ofTransfer.value() / 100;
    std::int64_t dayLimit = MoneyLimits().ofDay.value() / 100;
    bool demo = false;
    bool untilStdinCloses = false;
    bool attached = false;
};

/// Options that cannot be used; what() is one sentence.
class Unusable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

std::string readFile(const fs::path &file, std::size_t bound)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw Unusable("cannot read " + file.string());
    std::ostringstream text;
    text << in.rdbuf();
    if (text.str().size() > bound)
        throw Unusable(file.string() + " is too large");
    return text.str();
}

/// Splits "127.0.0.1:0" or "[::1]:8080".
void readListen(const std::string &text, ServiceOptions &options)
{
    const std::size_t colon = text.rfind(':');
    const auto port = colon == std::string::npos ? std::optional<std::int64_t>()
                                                 : readInteger(text.substr(colon + 1), 0, 65535);
    std::string address = text.substr(0, colon);
    if (address.size() > 2 && address.front() == '[' && address.back() == ']')
        address = address.substr(1, address.size() - 2);
    if (!port || address.empty())
        throw Unusable("--listen takes ADDRESS:PORT, for example 127.0.0.1:0, not " + text);
    options.address = address;
    options.port = static_cast<std::uint16_t>(*port);
}

/// Each parked poll is a descriptor, and the usual soft limit is a thousand of them.
std::size_t raiseFileLimit(std::size_t wanted)
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 512;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, wanted + otherFiles);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    ::getrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_cur > 2 * otherFiles
        ? std::min<std::size_t>(wanted, static_cast<std::size_t>(limit.rlim_cur - otherFiles))
        : 128;
}

/// The state folder holds people's money: its owner alone reads it.
void makeFolder(const fs::path &folder)
{
    std::error_code error;
    if (fs::create_directories(folder, error) && !error)
        fs::permissions(folder, fs::perms::owner_all, error);
    if (error || !fs::is_directory(folder))
        throw Unusable("cannot use the state folder " + folder.string()
                       + (error ? ": " + error.message() : ": it is not a folder"));
}

void refuseHeldFolder(const fs::path &folder)
{
    if (const auto holder = StateLock::holder(folder))
        throw Unusable("a service already runs on " + folder.string() + ", process "
                       + std::to_string(holder->pid) + ", port " + std::to_string(holder->port));
}

const char *reasonOf(Lifeline::End end)
{
    switch (end) {
    case Lifeline::End::Signal:
        return "signal";
    case Lifeline::End::NobodyAttached:
        return "nobody attached";
    case Lifeline::End::StandardInput:
        return "standard input closed";
    case Lifeline::End::Asked:
        return "fault";
    }
    return "";
}

std::string obey(Service &service, const std::string &command)
{
    if (command != "settle")
        return "unknown command";
    try {
        service.settle();
        return "settled";
    } catch (const std::exception &error) {
        return std::string("failed: ") + error.what();
    }
}

/// Passwords and tokens pass through the memory of the service: no core file keeps them, and no
/// other process of the same user reads them out.
void keepMemoryPrivate()
{
    const rlimit none{0, 0};
    if (::setrlimit(RLIMIT_CORE, &none) != 0 || ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0)
        throw std::runtime_error("cannot keep the memory of the service private");
}

/// What can be seen without touching the folder.
void checkNames(const Choices &choices, const ServiceOptions &options)
{
    for (const std::string &host : choices.hosts) {
        if (!HostNames::isName(host))
            throw Unusable("--host takes a name such as exchange.example.org, without a port, not "
                           + host);
    }
    if (!choices.publicUrl.empty() && !PublicAddress::isUrl(choices.publicUrl))
        throw Unusable(
            "--public-url takes http:// or https:// with a host and perhaps a port, such "
            "as https://exchange.example.org, not "
            + choices.publicUrl);
    if (choices.demo && !isLoopback(options.address))
        throw Unusable("--demo makes an account whose password everybody knows, and serves on a "
                       "loopback address alone, not on "
                       + options.address);
}

void readMoney(const Choices &choices, ServiceOptions &options)
{
    options.bankDelay = std::chrono::milliseconds(choices.bankDelay);
    options.bankRefusal = choices.bankRefuse == "in" ? BankRefusal::In
        : choices.bankRefuse == "out"                ? BankRefusal::Out
        : choices.bankRefuse == "all"                ? BankRefusal::All
                                                     : BankRefusal::None;
    options.moneyLimits.ofTransfer = Fen(choices.transferLimit * 100);
    options.moneyLimits.ofDay = Fen(choices.dayLimit * 100);
}

void readDeliveries(const Choices &choices, ServiceOptions &options)
{
    const auto milliseconds = [](double seconds) {
        return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1'000 + 0.5));
    };
    options.prepareDelay = milliseconds(choices.prepareDelay);
    options.shipDelay = milliseconds(choices.shipDelay);
    options.carrierRefuses = choices.carrierRefuses;
}

int serve(const Choices &choices)
{
    keepMemoryPrivate();
    // People's money and phone numbers lie in the files that are made: their owner alone reads
    // them.
    ::umask(0077);
    const fs::path folder = choices.state;
    Lifeline::Options life;
    life.folder = folder;
    life.attached = choices.attached;
    life.untilStdinCloses = choices.untilStdinCloses;
    Lifeline lifeline(life);

    ServiceOptions options;
    options.folder = folder;
    readListen(choices.listen, options);
    checkNames(choices, options);
    options.hostNames = choices.hosts;
    options.publicUrl = choices.publicUrl;
    options.demo = choices.demo;
    options.seed = choices.seed;
    options.robotOrdersPerSecond = choices.robots;
    readMoney(choices, options);
    readDeliveries(choices, options);
    options.limits.connections = raiseFileLimit(options.limits.connections);
    options.parkedPolls = std::min(options.parkedPolls, options.limits.connections * 4 / 5);
    if (!choices.catalogue.empty())
        options.firstCatalogue = readFile(choices.catalogue, catalogueBound);
    std::atomic<bool> failed{false};
    options.fatal = [&](const std::string &) {
        failed = true;
        lifeline.end();
    };

    makeFolder(folder);
    refuseHeldFolder(folder);
    ServiceLog log(folder);
    if (options.firstCatalogue && fs::exists(folder / "catalogue.json"))
        log.info("the state folder has a catalogue of its own, " + choices.catalogue
                 + " is not used");
    Service service(std::move(options), log);
    lifeline.listen();
    std::cout << "PORT " << service.port() << std::endl;

    const Lifeline::End end
        = lifeline.wait([&](const std::string &command) { return obey(service, command); });
    log.info(std::string("ending reason=\"") + reasonOf(end) + '"');
    lifeline.close();
    service.stop();
    return failed ? exitFault : 0;
}

void needState(const fs::path &folder)
{
    if (!fs::exists(folder / "catalogue.json"))
        throw Unusable(folder.string() + " holds no exchange");
}

int settle(const Choices &choices)
{
    const fs::path folder = choices.state;
    needState(folder);
    if (StateLock::holder(folder)) {
        const std::string answer = Lifeline::send(folder, "settle");
        if (answer != "settled")
            throw std::runtime_error("the running service could not settle: " + answer);
    } else {
        const Initials initials;
        ExchangeOptions options;
        options.folder = folder;
        options.initials = [&](std::string_view name) { return initials.of(name); };
        Exchange exchange(std::move(options));
        exchange.settle();
        exchange.stop();
    }
    std::cout << "settled: every market closed its session and opened the next one" << std::endl;
    return 0;
}

int outbox(const Choices &choices)
{
    needState(choices.state);
    const std::string text = outboxText(choices.state);
    std::cout << (text.empty() ? "no text messages have been sent\n" : text) << std::flush;
    if (!std::cout)
        throw std::runtime_error("cannot write to the standard output");
    return 0;
}

/// A starter may have closed some of the three standard descriptors. The next file that is opened
/// would take such a number, and the port and the log would be written into it.
void occupyStandardDescriptors()
{
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file) {
        if (::fcntl(file, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != file)
            throw std::runtime_error("cannot open /dev/null");
    }
}

/// Everything that keeps a command from doing its work becomes one sentence.
template <class Work>
int guarded(const Work &work)
{
    int code = exitUnusable;
    try {
        return work();
    } catch (const std::exception &error) {
        std::cerr << "zvexchange: " << error.what() << std::endl;
    }
    return code;
}

// The ranges that CLI brings along let through what is no number, read "010" as eight, and take -1
// for a very large number where none is below zero.

CLI::Validator numberCheck(std::int64_t least, std::int64_t most, const char *kind,
                           std::function<bool(const std::string &)> isRight)
{
    const std::string range = std::to_string(least) + " to " + std::to_string(most);
    return CLI::Validator(
        [range, kind, isRight = std::move(isRight)](std::string &text) {
            return isRight(text) ? std::string()
                                 : '"' + text + "\" is no " + kind + " from " + range;
        },
        range);
}

/// Plain decimals without a sign.
CLI::Validator wholeNumber(std::int64_t least, std::int64_t most)
{
    return numberCheck(least, most, "whole number", [least, most](const std::string &text) {
        return readInteger(text, least, most).has_value();
    });
}

/// The same with decimals.
CLI::Validator number(std::int64_t least, std::int64_t most)
{
    return numberCheck(least, most, "number", [least, most](const std::string &text) {
        double value = 0;
        const char *end = text.data() + text.size();
        const auto read = std::from_chars(text.data(), end, value);
        // False of what is no number, too.
        return read.ec == std::errc() && read.ptr == end && value >= static_cast<double>(least)
            && value <= static_cast<double>(most);
    });
}

void addServe(CLI::App &app, Choices &choices)
{
    CLI::App *serve = app.add_subcommand("serve", "Run the markets of a state folder");
    serve->add_option("--state", choices.state, "State folder; made where it is missing")
        ->required()
        ->type_name("DIR");
    serve
        ->add_option("--listen", choices.listen,
                     "Numeric address and port to listen on; port 0 takes a free one")
        ->type_name("ADDRESS:PORT")
        ->capture_default_str();
    serve
        ->add_option("--host", choices.hosts,
                     "Name under which clients ask for the service, beside numeric addresses and "
                     "localhost; may be given several times")
        ->type_name("NAME")
        ->allow_extra_args(false);
    serve
        ->add_option("--public-url", choices.publicUrl,
                     "Where telephones reach the service, for the addresses that it gives out; "
                     "without it the name by which a client asked for them")
        ->type_name("URL");
    serve
        ->add_option("--catalogue", choices.catalogue,
                     "Catalogue that a new state folder begins with; later the folder's own "
                     "catalogue.json counts")
        ->type_name("FILE");
    serve
        ->add_option("--robots", choices.robots,
                     "Orders a second that the robots of each market send, 0 to 200; 0 is none")
        ->type_name("RATE")
        ->check(number(0, mostRobotOrders))
        ->capture_default_str();
    serve->add_option("--seed", choices.seed, "Where the robots' chance begins")
        ->type_name("N")
        ->check(wholeNumber(0, INT64_MAX))
        ->capture_default_str();
    serve
        ->add_option("--transfer-limit", choices.transferLimit,
                     "Yuan that one transfer between an account and its bank card may move")
        ->type_name("YUAN")
        ->check(wholeNumber(1, mostYuan))
        ->capture_default_str();
    serve
        ->add_option("--day-limit", choices.dayLimit,
                     "Yuan that an account may move in a day, each way and in each market")
        ->type_name("YUAN")
        ->check(wholeNumber(1, mostYuan))
        ->capture_default_str();
    serve
        ->add_option("--bank-delay", choices.bankDelay,
                     "Milliseconds that the embedded bank takes for an answer")
        ->type_name("MS")
        ->check(wholeNumber(0, longestBankDelay))
        ->capture_default_str();
    serve
        ->add_option("--bank-refuse", choices.bankRefuse,
                     "What the embedded bank refuses: money in, money out, or all of it")
        ->type_name("in|out|all")
        ->check(CLI::IsMember({"in", "out", "all"}));
    serve
        ->add_option(
            "--prepare-delay", choices.prepareDelay,
            "Seconds after which the embedded carrier packs what was taken out; until then "
            "it can be cancelled")
        ->type_name("SECONDS")
        ->check(number(0, longestCarrierDelay))
        ->capture_default_str();
    serve
        ->add_option("--ship-delay", choices.shipDelay,
                     "Seconds after which the embedded carrier sends what it packed")
        ->type_name("SECONDS")
        ->check(number(0, longestCarrierDelay))
        ->capture_default_str();
    serve->add_flag("--carrier-refuse", choices.carrierRefuses,
                    "The embedded carrier refuses everything that it should pack");
    serve->add_flag("--demo", choices.demo,
                    "Give a new state folder a demo account with money and holdings, phone "
                    "13800000000, password demo888888; serves on a loopback address alone");
    auto *stdinEnds = serve->add_flag("--until-stdin-closes", choices.untilStdinCloses,
                                      "End when the standard input ends");
    serve
        ->add_flag("--attached", choices.attached,
                   "End when no client is attached any more for two seconds. A pipe on the "
                   "standard input is a client, and so is each connection to attach.sock in the "
                   "state folder; without a pipe the first client has 15 seconds to come")
        ->excludes(stdinEnds);
    serve->footer("The first line on the standard output is \"PORT\", a blank and the port number. "
                  "The log goes to the standard error output and to zvexchange.log in the state "
                  "folder.\n"
                  "SIGTERM, SIGINT and SIGHUP end the service cleanly. Exit codes: 0 clean end, "
                  "1 a fault while serving, 2 options or state folder not usable.");
}

} // namespace

int runCommandLine(int argc, char **argv)
{
    if (const int code = guarded([] {
            occupyStandardDescriptors();
            return 0;
        }))
        return code;
    Choices choices;
    CLI::App app("zvexchange: order books, ledger and quotes of the collectibles exchange.\n"
                 "A state folder holds everything: the catalogue, one store for each market, the "
                 "log and the lock.",
                 "zvexchange");
    app.set_version_flag("--version", "zvexchange " ZVX_VERSION);
    // One page for all: nobody should have to know a command before reading what it can do.
    app.set_help_flag();
    app.set_help_all_flag("-h,--help", "Explain the commands and all their options");
    app.require_subcommand(1);
    app.footer("Try: zvexchange serve --state ~/exchange\n"
               "     curl http://127.0.0.1:PORT/lc/market.html");

    addServe(app, choices);
    CLI::App *settling = app.add_subcommand(
        "settle",
        "Close the session of every market and open the same date with the next session "
        "number; asks the running service, or does it alone where none runs");
    CLI::App *reading
        = app.add_subcommand("outbox",
                             "Print the text messages with codes that the service has sent, one a "
                             "line: time, phone, text");
    for (CLI::App *command : {settling, reading})
        command->add_option("--state", choices.state, "State folder")->required()->type_name("DIR");

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &done) {
        return app.exit(done);
    } catch (const CLI::ParseError &error) {
        std::cerr << "zvexchange: " << error.what() << "\nRun zvexchange --help for the options."
                  << std::endl;
        return exitUnusable;
    }
    if (settling->parsed())
        return guarded([&] { return settle(choices); });
    if (reading->parsed())
        return guarded([&] { return outbox(choices); });
    return guarded([&] { return serve(choices); });
}

} // namespace zvx
