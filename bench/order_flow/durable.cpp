#include "durable.h"

#include "baselines.h"
#include "loads.h"
#include "setting.h"

#include "exchange/store/recovery.h"
#include "support/report.h"

#include <chrono>
#include <thread>

using namespace zvx;

namespace {

// Every answered order is there, and what is there adds up.
void checkStored(const std::filesystem::path &file, std::int64_t accepted, Failures &failures)
{
    SqliteStore store(file);
    const Recovered found = recoverMarket(store);
    if (found.market.lastOrder().value() != accepted)
        failures.push_back(std::to_string(accepted) + " orders were acknowledged, "
                           + std::to_string(found.market.lastOrder().value()) + " are stored");
    if (const auto violation = replayMarket(store).audit())
        failures.push_back("what was stored does not add up: " + *violation);
}

// One order at a time on an idle market, and the bare commit of the same rows in turn.
class IdleOrders
{
public:
    template <class Load>
    void measure(const Setting &setting, Load &load, BareCommits &bare, int orders)
    {
        constexpr auto pause = std::chrono::milliseconds(3);
        Trader trader = setting.traders().front();
        for (int i = 0; i < orders; ++i) {
            const PlaceOrder order = trader.next();
            std::this_thread::sleep_for(pause);
            const double answered = load.placeOne(order);
            std::this_thread::sleep_for(pause);
            const double committed = bare.commit(order);
            m_orders.push_back(answered);
            m_commits.push_back(committed);
            m_beyond.push_back(answered - committed);
        }
    }

    void report(Report &report, const std::string &what) const
    {
        constexpr double allowed = 0.4; // milliseconds beyond the commit
        report.words(
            what, fixedText(median(m_orders), 3) + " ms", fixedText(median(m_commits), 3) + " ms",
            "+" + fixedText(median(m_beyond), 3) + " ms", "+0.4 ms", median(m_beyond) <= allowed);
    }

private:
    std::vector<double> m_orders;
    std::vector<double> m_commits;
    std::vector<double> m_beyond;
};

void checkSameRows(const std::filesystem::path &file, BareCommits &bare, Failures &failures)
{
    SqliteStore store(file);
    if (timelessRows(store) != bare.rows())
        failures.push_back("the bare commits did not store the same rows");
}

} // namespace

void measureDurableOrders(const Options &options, Report &report, Failures &failures)
{
    const double span = options.quick ? 200 : 1500;
    const Setting setting(options);
    const auto doorFile = setting.copy("door.market");
    WriterLoad door(setting, doorFile);
    HttpLoad served(setting);
    PlainTable plain(setting.file("plain.sqlite"));
    Trader alone = setting.traders().front();
    Ceiling ceiling(setting.copy("ceiling.market"), setting.traders());

    Pairs servedBesidePlain;
    Pairs servedBesideCeiling;
    Pairs doorBesidePlain;
    Pairs doorBesideCeiling;
    double cpu = 0;
    double servedOrders = 0;
    for (int round = 0; round < options.rounds; ++round) {
        const double single = plain.run(alone, span / 2);
        const double cpuBefore = served.serverCpu();
        const auto before = static_cast<double>(served.accepted());
        const double overHttp = served.run(span);
        cpu += served.serverCpu() - cpuBefore;
        servedOrders += static_cast<double>(served.accepted()) - before;
        const double groups = ceiling.run(span / 2);
        const double atDoor = door.run(span);
        servedBesidePlain.add(overHttp, single);
        servedBesideCeiling.add(overHttp, groups);
        doorBesidePlain.add(atDoor, single);
        doorBesideCeiling.add(atDoor, groups);
    }
    door.stop();
    served.stop();
    checkStored(doorFile, door.accepted(), failures);
    checkStored(setting.state().store(), served.accepted(), failures);

    const Goal plainGoal = Goal::least(4, "4");
    const Goal ceilingGoal = Goal::least(0.35, "0.35");
    report.line("durable orders of 256 clients over HTTP, beside one row a commit",
                servedBesidePlain, "/s", plainGoal);
    report.line("… beside groups of 100 with the same rows", servedBesideCeiling, "/s",
                ceilingGoal);
    report.note("| … the service spends " + fixedText(cpu * 1000 / servedOrders, 1)
                + " us of CPU an order | | | | | |");
    report.line("the same at the market's door, without HTTP", doorBesidePlain, "/s", plainGoal);
    report.line("… beside groups of 100", doorBesideCeiling, "/s", ceilingGoal);
    report.note("| … " + fixedText(door.commandsOfCommit(), 0)
                + " commands in a commit | | | | | |");
}

void measureIdleOrder(const Options &options, Report &report, Failures &failures)
{
    const int orders = options.quick ? 20 : 60 * options.rounds;
    const Setting setting(options);
    {
        HttpLoad served(setting);
        BareCommits bare(setting.copy("bare.market"));
        IdleOrders times;
        times.measure(setting, served, bare, orders);
        served.stop();
        checkSameRows(setting.state().store(), bare, failures);
        times.report(report,
                     "one order on an idle service over HTTP, beside the bare commit of "
                     "its rows");
    }
    const auto file = setting.copy("door.market");
    WriterLoad door(setting, file);
    BareCommits bare(setting.copy("bare-door.market"));
    IdleOrders times;
    times.measure(setting, door, bare, orders);
    door.stop();
    checkSameRows(file, bare, failures);
    times.report(report, "the same at the market's door, without HTTP");
}
