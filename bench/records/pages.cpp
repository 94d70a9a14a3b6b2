#include "pages.h"

#include "serving/benchcatalogue.h"
#include "support/stopwatch.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

PageAsker::PageAsker(const ServiceProcess &service, const std::string &token)
    : m_service(service), m_token(token), m_client(service.port(), 1)
{
}

std::string PageAsker::request(const RecordList &list, std::int64_t number) const
{
    return getRequest(benchcatalogue::prefix + list.path + "?size=10&page=" + std::to_string(number)
                          + list.filter,
                      m_token);
}

std::vector<std::int64_t> PageAsker::page(const RecordList &list, std::int64_t number)
{
    bool isAnswered = false;
    std::vector<std::int64_t> numbers;
    m_client.answered = [&](std::size_t, const HttpFleet::Answer &answer) {
        const auto body = nlohmann::json::parse(answer.body);
        for (const auto &row : body.at("data").at(list.rows))
            numbers.push_back(row.at(list.number));
        isAnswered = true;
    };
    m_client.send(0, request(list, number));
    m_client.turnUntil([&] { return isAnswered; });
    return numbers;
}

PageAsker::Cost PageAsker::costOf(const RecordList &list, std::int64_t number, int times)
{
    const std::string asked = request(list, number);
    int answers = 0;
    m_client.answered = [&](std::size_t client, const HttpFleet::Answer &answer) {
        if (answer.status != 200)
            throw std::runtime_error("not answered: " + std::string(answer.body));
        if (++answers < times)
            m_client.send(client, asked);
    };
    const double before = m_service.cpu();
    const Stopwatch watch;
    m_client.send(0, asked);
    m_client.turnUntil([&] { return answers == times; });
    return {(m_service.cpu() - before) * 1000 / times, watch.wall() * 1000 / times};
}
