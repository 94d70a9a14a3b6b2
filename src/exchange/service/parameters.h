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

    /// The id named by `collection`. An id that no collection can have is CollectionId(0).
    std::optional<CollectionId> collection();

    /// Whether `protocol` is this service's number, or left out where it may be.
    bool protocolFits(Need need = Optional);

private:
    void blame(std::string_view name);

    const HttpParameters &m_parameters;
    std::string m_fault;
};

} // namespace zvx
