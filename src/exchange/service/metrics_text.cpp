#include "exchange/service/metrics_text.h"

namespace zvx {

void MetricsText::add(std::string_view name, std::uint64_t value)
{
    m_text.append(name).append(" ").append(std::to_string(value)).append("\n");
}

void MetricsText::add(std::string_view name, std::uint64_t value, std::string_view label,
                      std::string_view labelValue)
{
    m_text.append(name).append("{").append(label).append("=\"").append(labelValue);
    m_text.append("\"} ").append(std::to_string(value)).append("\n");
}

} // namespace zvx
