#pragma once

#include "setting.h"

#include "exchange/store/marketwriter.h"
#include "serving/childprocess.h"
#include "serving/httpfleet.h"

#include <condition_variable>
#include <mutex>
#include <vector>

// Both are clients in closed loops: each hands in its next order when the last one is answered.

// At the door of the market: its writer's queue.
class WriterLoad
{
public:
    WriterLoad(const Setting &setting, const std::filesystem::path &file);

    // Acknowledged orders a second.
    double run(double milliseconds);
    // Milliseconds until the order of one client is answered.
    double placeOne(const zvx::PlaceOrder &order);
    void stop() { m_writer.stop(); }

    std::int64_t accepted() const { return m_accepted; }
    double commandsOfCommit() const;

private:
    void submit(std::size_t client, const zvx::PlaceOrder &order);
    std::vector<std::size_t> take();

    zvx::MarketWriter m_writer;
    std::vector<Trader> m_traders;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::size_t> m_answered;
    std::int64_t m_accepted = 0;
};

// Over HTTP, each on a connection and with a session of its own.
class HttpLoad
{
public:
    explicit HttpLoad(const Setting &setting);

    double run(double milliseconds);
    double placeOne(const zvx::PlaceOrder &order);
    void stop() { m_service.stop(); }

    std::int64_t accepted() const { return m_accepted; }
    double serverCpu() const { return m_service.cpu(); }

private:
    void send(std::size_t client, const zvx::PlaceOrder &order);

    const Setting &m_setting;
    ServiceProcess m_service;
    HttpFleet m_fleet;
    std::vector<Trader> m_traders;
    std::int64_t m_accepted = 0;
    std::size_t m_open = 0;
    bool m_goesOn = false;
};
