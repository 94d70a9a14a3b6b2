#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zvx {

/// Counters as text, a line each: `name{label="value"} number`.
class MetricsText
{
public:
    void add(std::string_view name, std::uint64_t value);
    /// `labelValue` holds nothing that needs escapes.
    void add(std::string_view name, std::uint64_t value, std::string_view label,
             std::string_view labelValue);
    std::string take() { return std::move(m_text); }

private:
    std::string m_text;
};

} // namespace zvx
