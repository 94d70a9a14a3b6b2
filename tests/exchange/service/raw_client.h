#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zvxtest {

/// An answer as it came over the wire.
struct RawAnswer {
    int status = 0;
    std::string head;
    std::string body;

    bool closes() const { return head.find("\r\nConnection: close\r\n") != std::string::npos; }
};

/// A client that sends exactly the bytes it is told to.
class RawClient
{
public:
    using Wait = std::chrono::milliseconds;

    /// Connects to 127.0.0.1, from there or from another address of 127.0.0.0/8. Throws
    /// std::runtime_error when nobody listens.
    explicit RawClient(std::uint16_t port, const char *from = "127.0.0.1");
    ~RawClient();
    RawClient(RawClient &&other) noexcept;
    RawClient(const RawClient &) = delete;

    void send(const std::string &bytes);
    /// `GET address` with a Host.
    void get(const std::string &address);
    /// The same with `Authorization: Bearer token`.
    void get(const std::string &address, const std::string &token);
    /// `POST address` with a form, and with a token where there is one.
    void post(const std::string &address, const std::string &form, const std::string &token = {});
    /// Ends the sending side alone.
    void endSending();
    void close();

    /// The next answer; nothing when the connection ended or `wait` passed first.
    std::optional<RawAnswer> answer(Wait wait = Wait(10'000));
    /// Whether the other side closes within `wait`; what comes before is read away.
    bool isClosed(Wait wait = Wait(10'000));
    /// All that comes until the other side closes.
    std::string rest(Wait wait = Wait(10'000));

private:
    bool receive(std::chrono::steady_clock::time_point until);

    int m_file = -1;
    bool m_ended = false;
    std::string m_received;
};

/// One GET on a connection of its own.
RawAnswer fetch(std::uint16_t port, const std::string &address);

} // namespace zvxtest
