#include "crowd.h"
#include "measures.h"

#include "serving/benchcatalogue.h"
#include "support/report.h"
#include "support/stopwatch.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

using nlohmann::json;
using Steady = std::chrono::steady_clock;

constexpr std::size_t kWatched = 10; // collections that the crowd looks at

const char *const kBuiltTopics[] = {"check", "composite", "list", "item", "trade", "latest"};

std::uint64_t buildsOf(const Served &served, const std::string &topic)
{
    return served.metric("zvexchange_builds_total{topic=\"" + topic + "\"}");
}

// A buy that rests and a sell that takes a piece of it: five levels, a deal, new figures.
std::vector<std::string> dealOf(Served &served, std::size_t collection)
{
    return {served.orderRequest(0, Served::Buy, collection, 0, 2),
            served.orderRequest(1, Served::Sell, collection, 0, 1)};
}

} // namespace

void measureBuilds(const Options &options, Report &report, Failures &)
{
    Served served(options, 500, 2, kWatched);
    HttpFleet orders(served.port(), 1);
    Crowd crowd(served, kWatched);
    crowd.park();
    std::map<std::string, std::uint64_t> builds;
    for (const char *topic : kBuiltTopics)
        builds[topic] = buildsOf(served, topic);
    std::vector<PollState> before;
    for (std::size_t i = 0; i < kWatched; ++i)
        before.push_back(crowd.client(i));

    // Orders of another thread, one collection after the other.
    std::atomic<bool> isOver{false};
    std::thread trading([&] {
        for (std::size_t i = 0; !isOver; ++i) {
            placeAll(orders, dealOf(served, i % kWatched));
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }
    });
    crowd.goOn(std::chrono::milliseconds(options.quick ? 3'000 : 20'000));
    isOver = true;
    // The last changes are told as well before anything is counted.
    crowd.goOn(std::chrono::milliseconds(2'500));
    trading.join();

    std::uint64_t changes = 0;
    std::uint64_t made = 0;
    std::string each;
    for (const char *topic : kBuiltTopics) {
        std::uint64_t changed = 0;
        const std::string name = topic;
        const bool isOfCollection = name == "item" || name == "trade" || name == "latest";
        for (std::size_t i = 0; i < (isOfCollection ? kWatched : 1); ++i)
            changed += crowd.client(i).versions().at(name) - before[i].versions().at(name);
        const std::uint64_t built = buildsOf(served, name) - builds[name];
        changes += changed;
        made += built;
        each += ' ' + name + ' ' + std::to_string(built) + '/' + std::to_string(changed);
    }
    const double ratio = static_cast<double>(made) / static_cast<double>(changes);
    report.words("JSON made at 1,000 parked polls, beside changes", std::to_string(made) + " times",
                 std::to_string(changes) + " changes", fixedText(ratio, 2), "1.00",
                 changes > 0 && made <= changes);
    report.note("| …" + each + "; " + std::to_string(crowd.answers()) + " answers | | | | | |");
}

void measureBytes(const Options &options, Report &report, Failures &failures)
{
    constexpr std::size_t rows = 5000;
    constexpr std::size_t changed = 200;
    Served served(options, rows, 2, rows);
    HttpFleet orders(served.port(), 16);
    PollState state = caughtUp(served.port(), PollState(0));
    state.watchOnly("list");
    std::vector<double> ratios;
    std::vector<double> ticks;
    double whole = 0;
    double cells = 0;
    for (int round = 0; round < (options.quick ? 2 : 5); ++round) {
        std::vector<std::string> requests;
        for (std::size_t i = 0; i < changed; ++i) {
            for (std::string &request :
                 dealOf(served, (i * 23 + static_cast<std::size_t>(round)) % rows))
                requests.push_back(std::move(request));
        }
        // The first change after a quiet while is published by itself, the others together 1.2 s
        // later: the second answer is the tick.
        const PollState quiet = caughtUp(served.port(), state);
        placeAll(orders, requests);
        HttpFleet poll(served.port(), 1);
        state = quiet;
        std::size_t mostRows = 0;
        double bytes = 0;
        bool isAnswered = false;
        poll.answered = [&](std::size_t, const HttpFleet::Answer &answer) {
            const json body = json::parse(answer.body);
            state.take(body);
            isAnswered = true;
            const json &topics = body.at("data").at("topics");
            if (topics.empty())
                return;
            const json &changes = topics.at("list").at("changes");
            if (changes.size() <= mostRows)
                return;
            mostRows = changes.size();
            bytes = static_cast<double>(answer.bytes);
            cells = 0;
            for (const json &change : changes)
                cells += static_cast<double>(change.at(1).size());
            cells /= static_cast<double>(mostRows);
        };
        for (int i = 0; i < 3; ++i) {
            isAnswered = false;
            poll.send(0, state.request(1'500));
            poll.turnUntil([&] { return isAnswered; });
        }
        if (mostRows < changed * 9 / 10)
            failures.push_back("the tick told of " + std::to_string(mostRows) + " rows only");
        whole = static_cast<double>(
            fetchBody(served.port(), std::string(benchcatalogue::prefix) + "market/list.html")
                .size());
        ticks.push_back(bytes);
        ratios.push_back(bytes / whole);
    }
    const double ratio = median(ratios);
    report.words("bytes of a tick of 200 rows among 5,000, beside the whole list",
                 fixedText(median(ticks), 0), fixedText(whole, 0), "1/" + fixedText(1 / ratio, 1),
                 "1/50", ratio <= 1.0 / 50);
    report.note("| … " + fixedText(cells, 1) + " cells a row | | | | | |");
}

void measureTelling(const Options &options, Report &report, Failures &)
{
    Served served(options, 500, 2, 1);
    HttpFleet orders(served.port(), 1);
    Crowd crowd(served, 1);
    std::unique_ptr<BareServer> bare;
    std::unique_ptr<HttpFleet> twins;
    std::size_t count = 0;
    std::int64_t first = 0;
    std::int64_t last = 0;
    Pairs times;
    Pairs cpu;
    for (int round = -1; round < options.rounds; ++round) {
        // Both cadences have passed, so that everything that an order changes is told at once.
        std::this_thread::sleep_for(std::chrono::milliseconds(1'300));
        crowd.park();
        const double cpuBefore = served.process().cpu();
        placeAll(orders, {served.orderRequest(0, Served::Buy, 0, -1, 1)});
        const double told = crowd.awaitAllTold();
        const double spent = served.process().cpu() - cpuBefore;
        if (round < 0) {
            // The bare loop sends as many bytes.
            const std::size_t size = crowd.bytesTold();
            std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: ";
            const std::size_t body = size - answer.size() - 8;
            answer += std::to_string(body) + "\r\n\r\n" + std::string(body, 'x');
            bare = std::make_unique<BareServer>("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n",
                                                answer);
            twins = std::make_unique<HttpFleet>(bare->port(), Crowd::size, HttpFleet::WithStamps);
            twins->answered = [&](std::size_t, const HttpFleet::Answer &each) {
                first = count == 0 ? each.arrived : std::min(first, each.arrived);
                last = std::max(last, each.arrived);
                ++count;
            };
            continue;
        }
        count = 0;
        last = 0;
        for (std::size_t i = 0; i < Crowd::size; ++i)
            twins->send(i, getRequest("/park"));
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        const double bareBefore = bare->cpu();
        fetchBody(bare->port(), "/tell");
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        twins->turnUntil([&] { return count == Crowd::size; });
        times.add(told, static_cast<double>(last - first) / 1e6);
        cpu.add(spent, bare->cpu() - bareBefore);
    }
    report.line("1,000 parked polls told of a change, first to last, beside a bare send loop",
                times, "ms", Goal::most(1.5, "1.5"));
    report.line("… server CPU, with the order's own", cpu, "ms");
}

namespace {

// One trader with an order every few milliseconds, on a thread of its own while it lives. How late
// the answers are read does not count.
class Trading
{
public:
    explicit Trading(Served &served)
        : m_served(served), m_fleet(served.port(), 1, HttpFleet::WithStamps)
    {
        m_fleet.answered = [this](std::size_t, const HttpFleet::Answer &answer) {
            if (answer.status != 200)
                throw std::runtime_error("an order was not taken: " + std::string(answer.body));
            m_latencies.push_back(static_cast<double>(answer.arrived - m_sentAt) / 1e6);
            m_isAnswered = true;
        };
        m_thread = std::thread([this] {
            try {
                run();
            } catch (...) {
                m_fault = std::current_exception();
            }
        });
    }

    ~Trading() { end(); }

    // Milliseconds within which so large a part of the orders was answered, once it is over.
    double quantile(double part)
    {
        end();
        if (m_fault)
            std::rethrow_exception(m_fault);
        std::sort(m_latencies.begin(), m_latencies.end());
        const auto last = static_cast<double>(m_latencies.size() - 1);
        return m_latencies[static_cast<std::size_t>(part * last)];
    }

private:
    void run()
    {
        for (std::size_t i = 0; !m_isOver; ++i) {
            const bool buys = i % 2 == 0;
            const std::string request
                = m_served.orderRequest(buys ? 0 : 1, buys ? Served::Buy : Served::Sell, 0, 0, 1);
            m_isAnswered = false;
            m_sentAt = Stopwatch::nanoseconds(CLOCK_REALTIME);
            m_fleet.send(0, request);
            m_fleet.turnUntil([this] { return m_isAnswered; });
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    void end()
    {
        m_isOver = true;
        if (m_thread.joinable())
            m_thread.join();
    }

    Served &m_served;
    HttpFleet m_fleet;
    std::vector<double> m_latencies;
    std::int64_t m_sentAt = 0;
    bool m_isAnswered = true;
    std::exception_ptr m_fault;
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

} // namespace

void measureOrdersMeanwhile(const Options &options, Report &report, Failures &)
{
    Served served(options, 500, 2, 1);
    const auto span = std::chrono::milliseconds(options.quick ? 1'000 : 5'000);
    Pairs p99;
    Pairs p50;
    std::size_t told = 0;
    for (int round = 0; round < options.rounds; ++round) {
        Crowd crowd(served, 1);
        crowd.park();
        Trading meanwhile(served);
        crowd.goOn(span);
        const double polled99 = meanwhile.quantile(0.99);
        const double polled50 = meanwhile.quantile(0.5);
        told += crowd.answers();
        crowd.leave();

        Trading alone(served);
        std::this_thread::sleep_for(span);
        p99.add(polled99, alone.quantile(0.99));
        p50.add(polled50, alone.quantile(0.5));
    }
    report.line("p99 of an order while 1,000 polls are told of changes, beside none", p99, "ms",
                Goal::most(2, "2"));
    report.line("… median", p50, "ms");
    report.note("| … "
                + fixedText(static_cast<double>(told) * 1000
                                / static_cast<double>(span.count() * options.rounds),
                            0)
                + " polls told a second | | | | | |");
}
