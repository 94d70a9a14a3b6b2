#pragma once

#include "exchange/service/host_names.h"
#include "exchange/service/http_message.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zvx {

/// What the server has seen since it started. Read from any thread.
struct HttpCounters {
    std::atomic<std::uint64_t> connections{0};
    std::atomic<std::uint64_t> open{0};
    std::atomic<std::uint64_t> turnedAway{0};
    std::atomic<std::uint64_t> requests{0};
    std::atomic<std::uint64_t> refused{0};
    std::atomic<std::uint64_t> cutByDeadline{0};
    std::atomic<std::uint64_t> bytesOut{0};
    /// Answers by the hundred of their status: [2] counts 2xx.
    std::atomic<std::uint64_t> answers[6]{};
};

/// One listening address, served by one thread. A request that is answered later costs a connection
/// and no thread. Requests on one connection are answered one after the other, in order.
class HttpServer
{
public:
    struct Options {
        /// A numeric IPv4 or IPv6 address.
        std::string address = "127.0.0.1";
        /// 0 takes a free one.
        std::uint16_t port = 0;
        HttpLimits limits;
        /// Requests whose Host is none of these are refused; without it any Host will do.
        std::optional<HostNames> hosts;
    };

    /// Takes the address; clients that connect wait until `start`. Throws std::runtime_error with
    /// one sentence when it cannot. `handler` must outlive the server.
    HttpServer(const Options &options, HttpHandler &handler);
    ~HttpServer();
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    /// Begins to serve. Once.
    void start();

    std::uint16_t port() const;
    const HttpCounters &counters() const;

    /// Runs `task` on the server's thread, soon. From any thread; dropped after `stop`.
    void post(std::function<void()> task);
    /// Runs `task` on the server's thread at `time`. From any thread; dropped after `stop`.
    void callAt(std::chrono::steady_clock::time_point time, std::function<void()> task);

    /// Takes no new connections, lets answers that are being written finish (within the limit for
    /// reading an answer, two seconds at most), closes everything and ends the thread. Parked
    /// requests must have been answered before. Harmless when called again.
    void stop();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zvx
