#include "exchange/service/refusal_log.h"

#include "exchange/service/service_log.h"

namespace zvx {

RefusalLog::RefusalLog(ServiceLog &log) : m_log(log) { }

void RefusalLog::note(const HttpFault &fault)
{
    const auto now = std::chrono::steady_clock::now();
    if (now - m_second >= std::chrono::seconds(1)) {
        if (m_leftOut > 0)
            m_log.warn("requests refused without a line of their own count="
                       + std::to_string(m_leftOut));
        m_second = now;
        m_lines = 0;
        m_leftOut = 0;
    }
    if (m_lines == linesPerSecond) {
        ++m_leftOut;
        return;
    }
    ++m_lines;
    m_log.warn("request refused status=" + std::to_string(fault.status) + " reason=\""
               + fault.reason + '"');
}

} // namespace zvx
