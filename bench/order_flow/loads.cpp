#include "loads.h"

#include "serving/benchcatalogue.h"
#include "support/stopwatch.h"

#include "exchange/store/sqlitestore.h"

#include <cstdio>
#include <stdexcept>

using namespace zvx;

namespace {

std::string formOf(const PlaceOrder &order)
{
    char text[200];
    std::snprintf(text, sizeof text, "key=%016llx%016llx&collection=%lld&price=%lld&quantity=%lld",
                  static_cast<unsigned long long>(order.key.high),
                  static_cast<unsigned long long>(order.key.low),
                  static_cast<long long>(order.collection.value()),
                  static_cast<long long>(order.price.value()),
                  static_cast<long long>(order.quantity.value()));
    return text;
}

} // namespace

WriterLoad::WriterLoad(const Setting &setting, const std::filesystem::path &file)
    : m_writer(std::make_unique<SqliteStore>(file), setting.market(),
               std::make_shared<SystemClock>(), {}),
      m_traders(setting.traders())
{
    m_writer.start();
}

double WriterLoad::run(double milliseconds)
{
    std::vector<std::size_t> ready;
    for (std::size_t i = 0; i < m_traders.size(); ++i)
        ready.push_back(i);
    std::size_t answered = 0;
    const Stopwatch watch;
    while (watch.wall() < milliseconds) {
        for (const std::size_t client : ready)
            submit(client, m_traders[client].next());
        ready = take();
        answered += ready.size();
    }
    const double rate = static_cast<double>(answered) / watch.wall() * 1000;
    for (std::size_t open = m_traders.size() - ready.size(); open > 0;)
        open -= take().size();
    return rate;
}

double WriterLoad::placeOne(const PlaceOrder &order)
{
    const Stopwatch watch;
    submit(0, order);
    take();
    return watch.wall();
}

double WriterLoad::commandsOfCommit() const
{
    const WriterCounters &counters = m_writer.counters();
    return static_cast<double>(counters.committedCommands) / static_cast<double>(counters.commits);
}

void WriterLoad::submit(std::size_t client, const PlaceOrder &order)
{
    m_writer.submit(order, [this, client](const Result &result) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_accepted += result.status == Status::Accepted;
        m_answered.push_back(client);
        m_changed.notify_one();
    });
}

std::vector<std::size_t> WriterLoad::take()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_answered.empty(); });
    std::vector<std::size_t> answered;
    answered.swap(m_answered);
    return answered;
}

HttpLoad::HttpLoad(const Setting &setting)
    : m_setting(setting), m_service(setting.state().folder(), {"--robots", "0"}),
      m_fleet(m_service.port(), Setting::clients), m_traders(setting.traders())
{
    m_fleet.answered = [this](std::size_t client, const HttpFleet::Answer &answer) {
        if (answer.status != 200 || answer.body.find("\"status\":\"ok\"") == std::string_view::npos)
            throw std::runtime_error("an order was answered with " + std::to_string(answer.status)
                                     + ' ' + std::string(answer.body));
        ++m_accepted;
        --m_open;
        if (m_goesOn)
            send(client, m_traders[client].next());
    };
}

double HttpLoad::run(double milliseconds)
{
    const std::int64_t before = m_accepted;
    m_goesOn = true;
    const Stopwatch watch;
    for (std::size_t i = 0; i < m_traders.size(); ++i)
        send(i, m_traders[i].next());
    m_fleet.turnUntil([&] { return watch.wall() >= milliseconds; });
    const double rate = static_cast<double>(m_accepted - before) / watch.wall() * 1000;
    m_goesOn = false;
    m_fleet.turnUntil([this] { return m_open == 0; });
    return rate;
}

double HttpLoad::placeOne(const PlaceOrder &order)
{
    const Stopwatch watch;
    send(0, order);
    m_fleet.turnUntil([this] { return m_open == 0; });
    return watch.wall();
}

void HttpLoad::send(std::size_t client, const PlaceOrder &order)
{
    static const std::string paths[] = {std::string(benchcatalogue::prefix) + "trade/buy.html",
                                        std::string(benchcatalogue::prefix) + "trade/sell.html"};
    ++m_open;
    m_fleet.send(client,
                 postRequest(paths[static_cast<std::size_t>(order.side)], formOf(order),
                             m_setting.state().traders()[client].token));
}
