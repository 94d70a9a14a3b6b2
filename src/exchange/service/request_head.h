#pragma once

#include "exchange/service/http_message.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace zvx {

/// The request line and the header lines that this service reads.
struct RequestHead {
    std::string method;
    /// The whole address as it was sent, beginning with a slash.
    std::string target;
    /// As it was sent, with the port where there was one.
    std::string host;
    std::string authorization;
    std::string contentType;
    bool keepAlive = true;
    bool expectsContinue = false;
    bool chunked = false;
    std::uint64_t contentLength = 0;

    bool hasBody() const { return chunked || contentLength > 0; }
    std::string_view path() const;
    /// What follows the first question mark, or nothing.
    std::string_view query() const;
};

/// Reads one header block, its empty last line included. Whatever two readers could understand
/// differently is a fault with status 400: bare line ends, folded lines, spaces before a colon,
/// control characters, a missing or repeated Host, Transfer-Encoding together with Content-Length
/// or under HTTP/1.0, a length that is not plain digits, an address that is not a path, a broken
/// percent escape. Over a bound: status 413.
std::variant<RequestHead, HttpFault> readRequestHead(std::string_view block,
                                                     const HttpLimits &limits);

} // namespace zvx
