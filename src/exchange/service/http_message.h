#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zvx {

/// Bounds and deadlines of one listening server. Sizes are bytes.
struct HttpLimits {
    std::size_t header = 16 * 1024;
    std::size_t address = 4 * 1024;
    std::size_t body = 64 * 1024;
    std::size_t headerLines = 100;
    /// Connections served at once; one more is told 503 and closed.
    std::size_t connections = 5000;
    /// From the first byte of a request (or from accepting) to its last one.
    std::chrono::milliseconds request{10'000};
    /// How long a connection may stay open between two requests.
    std::chrono::milliseconds idle{60'000};
    /// How long a client may take to read one answer.
    std::chrono::milliseconds answer{10'000};
    /// How long a refused client's further bytes are read away, so that it can see the refusal.
    std::chrono::milliseconds linger{1'000};
};

/// Why a request is not handed to anyone: `status` is 400 or 413, `reason` is for the log.
struct HttpFault {
    int status = 400;
    std::string reason;
};

/// Decoded `name=value` pairs of an address or of a form body. Names are unique. The values may be
/// secrets, and are overwritten when they go.
class HttpParameters
{
public:
    HttpParameters() = default;
    HttpParameters(HttpParameters &&other) noexcept = default;
    HttpParameters &operator=(HttpParameters &&other) noexcept;
    ~HttpParameters();

    /// Reads `application/x-www-form-urlencoded` text. Nothing when a percent sign is not followed
    /// by two hexadecimal digits, when a text is not UTF-8 or holds NUL, when a name is empty or
    /// occurs twice, or when there are more than 64 pairs.
    static std::optional<HttpParameters> parse(std::string_view text);

    /// The value of `name`, or null when it was not given.
    const std::string *find(std::string_view name) const;
    const std::vector<std::pair<std::string, std::string>> &all() const { return m_pairs; }

private:
    std::vector<std::pair<std::string, std::string>> m_pairs;
};

struct HttpRequest {
    HttpRequest() = default;
    HttpRequest(HttpRequest &&other) noexcept = default;
    HttpRequest &operator=(HttpRequest &&other) = delete;
    /// Overwrites what may be secret: authorization and body.
    ~HttpRequest();

    std::string method;
    /// The address up to its question mark, not decoded: no path of this service needs escapes.
    std::string path;
    HttpParameters query;
    /// The Host header as it was sent, with the port where there was one.
    std::string host;
    std::string authorization;
    std::string contentType;
    std::string body;
    /// The other side's numeric address without a port; an IPv4 address stands as one whatever the
    /// socket's family.
    std::string peer;
};

/// A piece of an answer's body that several answers may share. Never null.
using HttpFragment = std::shared_ptr<const std::string>;

struct HttpAnswer {
    int status = 200;
    std::string contentType = "application/json; charset=utf-8";
    std::vector<HttpFragment> body;
    /// Set for 405: the methods that the path takes.
    std::string allow;
    /// Set for pages that a browser shows: the Content-Security-Policy.
    std::string contentSecurity;
    /// Ends the connection after this answer.
    bool close = false;

    static HttpAnswer of(int status, std::string text);
};

/// Where an answered request goes. One per request; the server gives it, the handler uses it once.
class HttpResponseSink
{
public:
    virtual ~HttpResponseSink() = default;
    virtual void answer(HttpAnswer answer) = 0;
    virtual void watch(std::function<void()> gone) = 0;
    /// Nobody will answer any more.
    virtual void lose() = 0;
};

/// The right, and the duty, to answer one request, now or later, from any thread, exactly once.
/// One that is dropped without an answer answers 500 by itself, so that no client waits for
/// nothing.
class HttpResponder
{
public:
    explicit HttpResponder(std::shared_ptr<HttpResponseSink> sink);
    HttpResponder(HttpResponder &&other) noexcept;
    HttpResponder &operator=(HttpResponder &&other) noexcept;
    HttpResponder(const HttpResponder &) = delete;
    HttpResponder &operator=(const HttpResponder &) = delete;
    ~HttpResponder();

    void answer(HttpAnswer answer);
    /// Asks for `gone` to be called, on the server's thread, when the client leaves before the
    /// answer; the request is then over, and a later answer is dropped. Without a watcher the
    /// answer of a client that only ended its sending side is still written.
    void watch(std::function<void()> gone);

private:
    std::shared_ptr<HttpResponseSink> m_sink;
};

/// Who answers a server's requests. All calls come on the server's thread and must not block.
class HttpHandler
{
public:
    virtual ~HttpHandler() = default;
    virtual void handle(HttpRequest request, HttpResponder responder) = 0;
    /// The answer to a request that was refused before it reached `handle`; the place for the one
    /// log line that says why. `fault.status` is 503 for one connection too many, and 500 for a
    /// request whose responder was dropped.
    virtual HttpAnswer refuse(const HttpFault &fault) = 0;
};

} // namespace zvx
