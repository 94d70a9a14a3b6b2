#pragma once

#include "longpast.h"

#include "serving/childprocess.h"
#include "serving/httpfleet.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Which records a question is for, and what it has to be answered with.
struct RecordList {
    std::string what; // for the table
    std::string path;
    std::string filter; // "&type=1"
    std::string rows; // the answer's list, and the field that numbers its rows
    std::string number;
    std::function<bool(const LongPast::Entry &)> isWanted;
    std::int64_t LongPast::Entry::*value;
};

// Asks a service for pages of ten, by one client.
class PageAsker
{
public:
    PageAsker(const ServiceProcess &service, const std::string &token);

    std::vector<std::int64_t> page(const RecordList &list, std::int64_t number);

    struct Cost {
        double cpu = 0; // of the server, in microseconds a question
        double wall = 0;
    };
    Cost costOf(const RecordList &list, std::int64_t number, int times);

private:
    std::string request(const RecordList &list, std::int64_t number) const;

    const ServiceProcess &m_service;
    std::string m_token;
    HttpFleet m_client;
};
