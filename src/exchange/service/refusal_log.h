#pragma once

#include "exchange/service/http_message.h"

#include <chrono>
#include <cstdint>

namespace zvx {

class ServiceLog;

/// One line for each request that was refused unread, and in a flood of them a bounded number of
/// lines a second, followed by how many were left out. On the server's thread only.
class RefusalLog
{
public:
    static constexpr int linesPerSecond = 20;

    explicit RefusalLog(ServiceLog &log);

    void note(const HttpFault &fault);

private:
    ServiceLog &m_log;
    std::chrono::steady_clock::time_point m_second;
    int m_lines = 0;
    std::uint64_t m_leftOut = 0;
};

} // namespace zvx
