#include "serving/httpfleet.h"

#include "support/stopwatch.h"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::size_t kReadSize = 256 * 1024;

[[noreturn]] void fail(const std::string &what)
{
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

int connectTo(std::uint16_t port)
{
    const int file = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (file < 0 || ::connect(file, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        fail("cannot connect");
    const int on = 1;
    ::setsockopt(file, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return file;
}

// Bytes of the answer that stands at the beginning of `bytes`, or 0 where it is not whole.
std::size_t lengthOf(std::string_view bytes, std::size_t &head)
{
    const std::size_t end = bytes.find("\r\n\r\n");
    if (end == std::string_view::npos)
        return 0;
    head = end + 4;
    constexpr std::string_view name = "Content-Length: ";
    const std::size_t at = bytes.substr(0, head).find(name);
    std::size_t length = 0;
    if (at != std::string_view::npos)
        std::from_chars(bytes.data() + at + name.size(), bytes.data() + head, length);
    return bytes.size() < head + length ? 0 : head + length;
}

} // namespace

HttpFleet::HttpFleet(std::uint16_t port, std::size_t clients, Stamps stamps)
    : m_clients(clients), m_poll(::epoll_create1(EPOLL_CLOEXEC)), m_hasStamps(stamps == WithStamps),
      m_buffer(kReadSize, '\0')
{
    if (m_poll < 0)
        fail("epoll_create1");
    for (std::size_t i = 0; i < clients; ++i) {
        m_clients[i].file = connectTo(port);
        const int on = 1;
        if (m_hasStamps)
            ::setsockopt(m_clients[i].file, SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on);
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = i;
        if (::epoll_ctl(m_poll, EPOLL_CTL_ADD, m_clients[i].file, &event) != 0)
            fail("epoll_ctl");
    }
}

HttpFleet::~HttpFleet()
{
    for (const Client &client : m_clients)
        ::close(client.file);
    ::close(m_poll);
}

void HttpFleet::send(std::size_t client, std::string_view request)
{
    const ssize_t sent
        = ::send(m_clients[client].file, request.data(), request.size(), MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(request.size()))
        fail("cannot send");
}

void HttpFleet::turnUntil(const std::function<bool()> &isDone, std::chrono::milliseconds bound)
{
    const Stopwatch watch;
    while (!isDone()) {
        if (watch.wall() > static_cast<double>(bound.count()))
            throw std::runtime_error("the server did not answer in time");
        turn(50);
    }
}

void HttpFleet::turn(int milliseconds)
{
    epoll_event events[256];
    const int count = ::epoll_wait(m_poll, events, 256, milliseconds);
    for (int i = 0; i < count; ++i)
        read(static_cast<std::size_t>(events[i].data.u64));
}

void HttpFleet::read(std::size_t client)
{
    iovec place{m_buffer.data(), m_buffer.size()};
    char control[128];
    msghdr message{};
    message.msg_iov = &place;
    message.msg_iovlen = 1;
    if (m_hasStamps) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
    }
    const ssize_t count = ::recvmsg(m_clients[client].file, &message, MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (count <= 0)
        throw std::runtime_error("the server ended a connection");
    for (cmsghdr *part = CMSG_FIRSTHDR(&message); part; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_TIMESTAMPNS) {
            timespec time{};
            std::memcpy(&time, CMSG_DATA(part), sizeof time);
            m_arrived = std::int64_t(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
        }
    }

    const std::string_view bytes(m_buffer.data(), static_cast<std::size_t>(count));
    std::string &received = m_clients[client].received;
    // Nearly always an answer comes whole, and is read where it is.
    if (received.empty()) {
        received.append(bytes.substr(take(client, bytes)));
    } else {
        received.append(bytes);
        const std::string whole = std::move(received);
        received = whole.substr(take(client, whole));
    }
}

std::size_t HttpFleet::take(std::size_t client, std::string_view bytes)
{
    std::size_t head = 0;
    const std::size_t length = lengthOf(bytes, head);
    if (length == 0)
        return 0;
    Answer answer;
    answer.status = std::atoi(std::string(bytes.substr(9, 3)).c_str());
    answer.body = bytes.substr(head, length - head);
    answer.bytes = length;
    answer.arrived = m_arrived;
    answered(client, answer);
    return length;
}

std::string getRequest(const std::string &address, const std::string &token)
{
    std::string text = "GET " + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    if (!token.empty())
        text += "Authorization: Bearer " + token + "\r\n";
    return text + "Accept-Encoding: identity\r\nConnection: Keep-Alive\r\n\r\n";
}

std::string postRequest(const std::string &address, const std::string &form,
                        const std::string &token)
{
    std::string text = "POST " + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    if (!token.empty())
        text += "Authorization: Bearer " + token + "\r\n";
    return text + "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: "
        + std::to_string(form.size())
        + "\r\nAccept-Encoding: identity\r\nConnection: Keep-Alive\r\n\r\n" + form;
}

std::string fetchBody(std::uint16_t port, const std::string &address)
{
    HttpFleet one(port, 1);
    std::string body;
    bool isAnswered = false;
    one.answered = [&](std::size_t, const HttpFleet::Answer &answer) {
        if (answer.status != 200)
            throw std::runtime_error(address + " answers " + std::to_string(answer.status));
        body = answer.body;
        isAnswered = true;
    };
    one.send(0, getRequest(address));
    one.turnUntil([&] { return isAnswered; });
    return body;
}
