#include "exchange/service/raw_client.h"

#include <cerrno>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zvxtest {

RawClient::RawClient(std::uint16_t port, const char *from)
    : m_file(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::inet_addr(from);
    const bool bound = ::bind(m_file, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (!bound || ::connect(m_file, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        ::close(m_file);
        throw std::runtime_error("cannot connect");
    }
}

RawClient::RawClient(RawClient &&other) noexcept
    : m_file(other.m_file), m_ended(other.m_ended), m_received(std::move(other.m_received))
{
    other.m_file = -1;
}

RawClient::~RawClient()
{
    close();
}

void RawClient::send(const std::string &bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count
            = ::send(m_file, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0)
            return; // A server that closed early is what some tests look for.
        sent += static_cast<std::size_t>(count);
    }
}

void RawClient::get(const std::string &address)
{
    send("GET " + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
}

void RawClient::get(const std::string &address, const std::string &token)
{
    send("GET " + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: Bearer " + token
         + "\r\n\r\n");
}

void RawClient::post(const std::string &address, const std::string &form, const std::string &token)
{
    send("POST " + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\n"
         + (token.empty() ? "" : "Authorization: Bearer " + token + "\r\n")
         + "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: "
         + std::to_string(form.size()) + "\r\n\r\n" + form);
}

void RawClient::endSending()
{
    ::shutdown(m_file, SHUT_WR);
}

void RawClient::close()
{
    if (m_file >= 0)
        ::close(m_file);
    m_file = -1;
}

bool RawClient::receive(std::chrono::steady_clock::time_point until)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        until - std::chrono::steady_clock::now());
    pollfd file{m_file, POLLIN, 0};
    if (m_ended || left.count() < 0 || ::poll(&file, 1, static_cast<int>(left.count()) + 1) <= 0)
        return false;
    char bytes[65536];
    const ssize_t count = ::recv(m_file, bytes, sizeof bytes, 0);
    if (count <= 0) {
        m_ended = true;
        return false;
    }
    m_received.append(bytes, static_cast<std::size_t>(count));
    return true;
}

std::optional<RawAnswer> RawClient::answer(Wait wait)
{
    const auto until = std::chrono::steady_clock::now() + wait;
    std::size_t end = m_received.find("\r\n\r\n");
    while (end == std::string::npos) {
        if (!receive(until))
            return std::nullopt;
        end = m_received.find("\r\n\r\n");
    }
    RawAnswer answer;
    answer.head = m_received.substr(0, end + 4);
    answer.status = std::stoi(answer.head.substr(9, 3));
    const std::size_t length = answer.head.find("Content-Length:");
    const std::size_t size
        = length == std::string::npos ? 0 : std::stoul(answer.head.substr(length + 15));
    while (m_received.size() < end + 4 + size) {
        if (!receive(until))
            return std::nullopt;
    }
    answer.body = m_received.substr(end + 4, size);
    m_received.erase(0, end + 4 + size);
    return answer;
}

bool RawClient::isClosed(Wait wait)
{
    const auto until = std::chrono::steady_clock::now() + wait;
    while (receive(until))
        m_received.clear();
    return m_ended;
}

std::string RawClient::rest(Wait wait)
{
    const auto until = std::chrono::steady_clock::now() + wait;
    while (receive(until)) { }
    return std::move(m_received);
}

RawAnswer fetch(std::uint16_t port, const std::string &address)
{
    RawClient client(port);
    client.get(address);
    return client.answer().value_or(RawAnswer());
}

} // namespace zvxtest
