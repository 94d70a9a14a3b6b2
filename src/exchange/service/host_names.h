#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zvx {

/**
 * The names under which a client may ask for this service.
 *
 * A web page can let a name of its own point to this machine and have the reader's browser ask for
 * it; the browser then takes the service for a part of that page. Such a request still carries the
 * page's name in its Host, and is refused for it.
 */
class HostNames
{
public:
    /// Numeric addresses and `localhost` always count; `more` are names such as
    /// "exchange.example.org".
    explicit HostNames(std::vector<std::string> more = {});

    /// Whether the value of a Host header, with or without a port, names this machine. The case of
    /// letters does not count.
    bool accept(std::string_view host) const;

    /// Whether a text can be a name: letters, digits and hyphens in parts divided by dots.
    static bool isName(std::string_view text);

private:
    std::vector<std::string> m_names; ///< lower case
};

/// Whether a numeric address reaches no further than this machine.
bool isLoopback(const std::string &address);

} // namespace zvx
