#include "served.h"

#include "serving/benchcatalogue.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <stdexcept>

using nlohmann::json;

Served::Served(const Options &options, std::size_t collections, std::size_t traders,
               std::size_t held)
    : m_folder(options.folder), m_state(m_folder.path() / "state", collections, traders, held),
      m_service(m_state.folder(), {"--robots", "0"})
{
}

std::uint64_t Served::metric(const std::string &name) const
{
    const std::string text = '\n' + fetchBody(port(), "/metrics");
    const std::size_t at = text.find('\n' + name + ' ');
    if (at == std::string::npos)
        throw std::runtime_error("no metric " + name);
    return std::stoull(text.substr(at + name.size() + 2));
}

std::string Served::orderRequest(std::size_t trader, Side side, std::size_t collection, int above,
                                 int quantity)
{
    char form[160];
    std::snprintf(form, sizeof form, "key=be9c%028llx&collection=%d&price=%d&quantity=%d",
                  static_cast<unsigned long long>(++m_keys),
                  benchcatalogue::firstCollection + static_cast<int>(collection),
                  benchcatalogue::previousClose(collection) + above, quantity);
    return postRequest(std::string(benchcatalogue::prefix)
                           + (side == Buy ? "trade/buy.html" : "trade/sell.html"),
                       form, token(trader));
}

PollState::PollState(std::size_t collection) : m_collection(collection)
{
    for (const char *topic : {"market", "message", "check", "composite", "brief", "type", "list",
                              "item", "trade", "latest"})
        m_versions[topic] = 0;
}

std::string PollState::request(int wait, const std::string &token) const
{
    std::string address = std::string(benchcatalogue::prefix) + "sync.html?protocol=1&boot="
        + m_boot + "&wait=" + std::to_string(wait) + "&limit=10&collection="
        + std::to_string(benchcatalogue::firstCollection + static_cast<int>(m_collection));
    for (const auto &[topic, version] : m_versions)
        address += '&' + topic + '=' + std::to_string(version);
    return getRequest(address, token);
}

void PollState::take(const json &answer)
{
    m_boot = answer.at("boot");
    for (const auto &[topic, entry] : answer.at("data").at("topics").items()) {
        const auto held = m_versions.find(topic);
        if (held != m_versions.end())
            held->second = entry.at("version");
    }
}

void PollState::watchOnly(const std::string &topic)
{
    m_versions = {{topic, m_versions.at(topic)}};
}

void placeAll(HttpFleet &fleet, const std::vector<std::string> &requests)
{
    std::size_t next = 0;
    std::size_t answers = 0;
    fleet.answered = [&](std::size_t client, const HttpFleet::Answer &answer) {
        if (answer.body.find("\"status\":\"ok\"") == std::string_view::npos)
            throw std::runtime_error("an order was not taken: " + std::string(answer.body));
        ++answers;
        if (next < requests.size())
            fleet.send(client, requests[next++]);
    };
    for (std::size_t client = 0; client < fleet.size() && next < requests.size(); ++client)
        fleet.send(client, requests[next++]);
    fleet.turnUntil([&] { return answers == requests.size(); });
}

PollState caughtUp(std::uint16_t port, PollState state)
{
    HttpFleet one(port, 1);
    bool isNew = true;
    while (isNew) {
        bool isAnswered = false;
        one.answered = [&](std::size_t, const HttpFleet::Answer &answer) {
            const json body = json::parse(answer.body);
            isNew = !body.at("data").at("topics").empty();
            state.take(body);
            isAnswered = true;
        };
        one.send(0, state.request(0));
        one.turnUntil([&] { return isAnswered; });
    }
    return state;
}
