#pragma once

#include "options.h"

#include "serving/childprocess.h"
#include "serving/httpfleet.h"
#include "serving/seededstate.h"
#include "support/scratchfolder.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

// A service with so many collections and traders, and without robots: whatever changes was ordered
// here.
class Served
{
public:
    Served(const Options &options, std::size_t collections, std::size_t traders, std::size_t held);

    ServiceProcess &process() { return m_service; }
    std::uint16_t port() const { return m_service.port(); }
    const std::string &token(std::size_t trader) const { return m_state.traders()[trader].token; }

    // A line of /metrics.
    std::uint64_t metric(const std::string &name) const;

    enum Side { Buy, Sell };
    // An order of one piece or more; the price lies `above` the previous close.
    std::string orderRequest(std::size_t trader, Side side, std::size_t collection, int above,
                             int quantity);

private:
    ScratchFolder m_folder;
    SeededState m_state;
    ServiceProcess m_service;
    std::uint64_t m_keys = 0;
};

// What one polling client holds: the versions of what it watches.
class PollState
{
public:
    // Watches the topics of the market, and of one collection.
    explicit PollState(std::size_t collection);

    std::string request(int wait, const std::string &token = {}) const;
    // Takes the answer in. Throws where it is none.
    void take(const nlohmann::json &answer);

    const std::map<std::string, std::uint64_t> &versions() const { return m_versions; }
    void watchOnly(const std::string &topic);

private:
    std::size_t m_collection;
    std::string m_boot;
    std::map<std::string, std::uint64_t> m_versions;
};

// Sends orders and waits for their answers; each has to be taken.
void placeAll(HttpFleet &fleet, const std::vector<std::string> &requests);

// Asks until everything that the poll watches has come, and returns the state that holds it.
PollState caughtUp(std::uint16_t port, PollState state);
