#pragma once

#include <string>
#include <string_view>

namespace zvx {

struct HttpRequest;

/// Under which address the pages of this service are reached from outside.
class PublicAddress
{
public:
    /// `url` is what the operator says, such as "https://exchange.example.org", or empty: then it
    /// is the name by which each request asked for the service.
    explicit PublicAddress(std::string url = {});

    /// "http://127.0.0.1:8080", without a slash at its end.
    std::string baseFor(const HttpRequest &request) const;
    /// The name or numeric address in the operator's URL, without its port and without brackets;
    /// empty where there is none.
    std::string_view host() const;

    /// Whether a text is http:// or https:// with a host and perhaps a port, and nothing else; one
    /// slash may follow.
    static bool isUrl(std::string_view text);

private:
    std::string m_url; ///< without a slash at its end
};

} // namespace zvx
