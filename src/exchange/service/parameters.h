#pragma once

#include "exchange/core/types.h"
#include "exchange/service/http_message.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zvx {

/// Reads a whole number in plain decimal: digits alone, no sign, no leading zeros. Nothing when the
/// text is anything else or the number is outside of `least` to `most`.
std::optional<std::int64_t> readInteger(std::string_view text, std::int64_t least,
                                        std::int64_t most);

/// Reads the parameters of one request strictly and keeps the name of the first one that is wrong.
class ParameterReader
{
public:
    enum Need { Optional, Required };

    explicit ParameterReader(const HttpParameters &parameters);

    /// Name of the first parameter that was missing, malformed or out of bounds; else empty.
    const std::string &fault() const { return m_fault; }

    /// The number, or nothing where it was not given or is wrong.
    std::optional<std::int64_t> integer(std::string_view name, std::int64_t least,
                                        std::int64_t most);

    /// The same for a number that may have a minus sign.
    std::optional<std::int64_t> signedInteger(std::string_view name, std::int64_t least,
                                              std::int64_t most);

    /// The trading day, such as "2019-12-31".
    std::optional<TradingDay> day(std::string_view name);
    /// The first or the last day of those that are asked for, such as "2020/01/01"; nothing where
    /// there is no such bound, which an empty text says as well.
    std::optional<TradingDay> dayBound(std::string_view name);

    /// The id named by `collection`. An id that no collection can have is CollectionId(0).
    std::optional<CollectionId> collection();

    /// Whether `protocol` is this service's number, or left out where it may be.
    bool protocolFits(Need need = Optional);

private:
    void blame(std::string_view name);
    std::optional<TradingDay> readDayOf(std::string_view name, const std::string &text,
                                        char separator);

    const HttpParameters &m_parameters;
    std::string m_fault;
};

} // namespace zvx
