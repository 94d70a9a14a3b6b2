#include "exchange/service/parameters.h"

#include "exchange/service/protocol.h"
#include "exchange/store/calendar.h"

#include <charconv>

namespace zvx {

std::optional<std::int64_t> readInteger(std::string_view text, std::int64_t least,
                                        std::int64_t most)
{
    if (text.empty() || text.front() < '0' || text.front() > '9'
        || (text.size() > 1 && text.front() == '0'))
        return std::nullopt;
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < least || value > most)
        return std::nullopt;
    return value;
}

ParameterReader::ParameterReader(const HttpParameters &parameters) : m_parameters(parameters) { }

void ParameterReader::blame(std::string_view name)
{
    if (m_fault.empty())
        m_fault = name;
}

std::optional<std::int64_t> ParameterReader::integer(std::string_view name, std::int64_t least,
                                                     std::int64_t most)
{
    const std::string *text = m_parameters.find(name);
    if (!text)
        return std::nullopt;
    const auto value = readInteger(*text, least, most);
    if (!value)
        blame(name);
    return value;
}

std::optional<std::int64_t> ParameterReader::signedInteger(std::string_view name,
                                                           std::int64_t least, std::int64_t most)
{
    const std::string *text = m_parameters.find(name);
    if (!text)
        return std::nullopt;
    std::string_view digits = *text;
    const bool negative = !digits.empty() && digits.front() == '-';
    if (negative)
        digits.remove_prefix(1);
    const auto size = readInteger(digits, 0, INT64_MAX);
    const std::int64_t value = negative ? -size.value_or(0) : size.value_or(0);
    if (!size || value < least || value > most) {
        blame(name);
        return std::nullopt;
    }
    return value;
}

std::optional<TradingDay> ParameterReader::readDayOf(std::string_view name, const std::string &text,
                                                     char separator)
{
    const auto value = readDay(text, separator);
    if (!value)
        blame(name);
    return value;
}

std::optional<TradingDay> ParameterReader::day(std::string_view name)
{
    const std::string *text = m_parameters.find(name);
    return text ? readDayOf(name, *text, '-') : std::nullopt;
}

std::optional<TradingDay> ParameterReader::dayBound(std::string_view name)
{
    const std::string *text = m_parameters.find(name);
    return text && !text->empty() ? readDayOf(name, *text, '/') : std::nullopt;
}

std::optional<CollectionId> ParameterReader::collection()
{
    // Rows that stand for more than one collection have negative ids; nothing is asked of them.
    const auto value = signedInteger("collection", -INT64_MAX, INT64_MAX);
    if (!value)
        return std::nullopt;
    return CollectionId(*value < 0 || *value > CollectionId::most ? 0 : *value);
}

bool ParameterReader::protocolFits(Need need)
{
    const auto number = integer("protocol", 0, INT64_MAX);
    if (!number && need == Required)
        blame("protocol");
    return m_fault.empty() && number.value_or(protocolNumber) == protocolNumber;
}

} // namespace zvx
