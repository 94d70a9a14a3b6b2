#include "exchange/service/lifeline.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace zvx {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t clientBound = 256;
constexpr std::size_t lineBound = 1024;

std::runtime_error failure(const std::string &what)
{
    return std::runtime_error(what + ": " + std::strerror(errno));
}

sigset_t endSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int each : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&set, each);
    return set;
}

/// A socket address holds 107 bytes, a state folder may have a longer name: the address goes
/// through an open descriptor of the folder.
class SocketPlace
{
public:
    explicit SocketPlace(const std::filesystem::path &folder)
        : m_folder(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC))
    {
        if (m_folder < 0)
            throw failure("cannot open " + folder.string());
        const std::string path
            = "/proc/self/fd/" + std::to_string(m_folder) + '/' + Lifeline::socketName;
        m_address.sun_family = AF_UNIX;
        path.copy(m_address.sun_path, sizeof m_address.sun_path - 1);
    }
    ~SocketPlace() { ::close(m_folder); }
    SocketPlace(const SocketPlace &) = delete;
    SocketPlace &operator=(const SocketPlace &) = delete;

    const sockaddr *address() const { return reinterpret_cast<const sockaddr *>(&m_address); }
    socklen_t size() const { return sizeof m_address; }

private:
    int m_folder;
    sockaddr_un m_address{};
};

} // namespace

Lifeline::Lifeline(Options options) : m_options(std::move(options))
{
    const sigset_t set = endSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    m_signals = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    m_wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_signals < 0 || m_wake < 0)
        throw failure("cannot wait for signals");
    if (m_options.attached) {
        // A starter that holds a pipe counts as a client; a terminal or nothing does not.
        struct stat input {
        };
        m_starter = ::fstat(STDIN_FILENO, &input) == 0
            && (S_ISFIFO(input.st_mode) || S_ISSOCK(input.st_mode));
    } else {
        m_starter = m_options.untilStdinCloses;
    }
}

Lifeline::~Lifeline()
{
    close();
    for (const Client &client : m_clients)
        ::close(client.file);
    ::close(m_wake);
    ::close(m_signals);
}

void Lifeline::close()
{
    if (m_listener < 0)
        return;
    ::unlink((m_options.folder / socketName).c_str());
    ::close(m_listener);
    m_listener = -1;
}

void Lifeline::listen()
{
    ::unlink((m_options.folder / socketName).c_str());
    m_listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_listener < 0)
        throw failure("cannot make a socket");
    const SocketPlace place(m_options.folder);
    // Only the owner may hold the service alive or command it.
    const mode_t before = ::umask(0177);
    const int bound = ::bind(m_listener, place.address(), place.size());
    ::umask(before);
    if (bound != 0 || ::listen(m_listener, 64) != 0)
        throw failure("cannot listen on " + (m_options.folder / socketName).string());
}

std::size_t Lifeline::attached() const
{
    return m_clients.size() + (m_starter ? 1 : 0);
}

Lifeline::End Lifeline::wait(const Control &control)
{
    std::optional<Clock::time_point> aloneUntil;
    bool anyone = m_starter;
    while (true) {
        int timeout = -1;
        if (attached() > 0) {
            anyone = true;
            aloneUntil.reset();
        } else if (m_options.attached) {
            if (!aloneUntil)
                aloneUntil = Clock::now() + (anyone ? m_options.grace : m_options.firstClient);
            const auto left
                = std::chrono::duration_cast<std::chrono::milliseconds>(*aloneUntil - Clock::now());
            if (left.count() <= 0)
                return End::NobodyAttached;
            timeout = static_cast<int>(left.count()) + 1;
        }

        std::vector<pollfd> files = {{m_signals, POLLIN, 0},
                                     {m_wake, POLLIN, 0},
                                     {m_clients.size() < clientBound ? m_listener : -1, POLLIN, 0},
                                     {m_starter ? STDIN_FILENO : -1, POLLIN, 0}};
        for (const Client &client : m_clients)
            files.push_back({client.file, POLLIN, 0});
        if (::poll(files.data(), files.size(), timeout) < 0) {
            if (errno == EINTR)
                continue;
            throw failure("cannot wait for clients");
        }

        if (files[0].revents != 0)
            return End::Signal;
        if (files[1].revents != 0)
            return End::Asked;
        for (std::size_t i = 4; i < files.size(); ++i) {
            if (files[i].revents != 0)
                read(m_clients[i - 4], control);
        }
        m_clients.erase(std::remove_if(m_clients.begin(), m_clients.end(),
                                       [](const Client &client) { return !client.open; }),
                        m_clients.end());
        if (files[2].revents != 0)
            accept();
        if (files[3].revents != 0 && !readStarter()) {
            m_starter = false;
            if (m_options.untilStdinCloses)
                return End::StandardInput;
        }
    }
}

void Lifeline::accept()
{
    const int file = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (file < 0)
        return;
    Client client;
    client.file = file;
    m_clients.push_back(std::move(client));
}

void Lifeline::read(Client &client, const Control &control)
{
    char bytes[512];
    const ssize_t count = ::read(client.file, bytes, sizeof bytes);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    client.open = count > 0;
    if (client.open) {
        client.line.append(bytes, static_cast<std::size_t>(count));
        for (std::size_t end = client.line.find('\n'); end != std::string::npos;
             end = client.line.find('\n')) {
            const std::string answer = control(client.line.substr(0, end)) + '\n';
            client.line.erase(0, end + 1);
            // An answer is one short line; a client that does not read it has no claim to more.
            client.open = ::send(client.file, answer.data(), answer.size(), MSG_NOSIGNAL)
                == static_cast<ssize_t>(answer.size());
        }
        client.open = client.open && client.line.size() <= lineBound;
    }
    if (!client.open)
        ::close(client.file);
}

bool Lifeline::readStarter()
{
    char bytes[512];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

void Lifeline::end()
{
    const std::uint64_t one = 1;
    if (::write(m_wake, &one, sizeof one) != static_cast<ssize_t>(sizeof one)) {
        // The counter can only be full of earlier calls, which is as good.
    }
}

std::string Lifeline::send(const std::filesystem::path &folder, const std::string &command)
{
    const int file = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (file < 0)
        throw failure("cannot make a socket");
    std::string answer;
    try {
        const SocketPlace place(folder);
        if (::connect(file, place.address(), place.size()) != 0)
            throw failure("no service answers at " + (folder / socketName).string());
        const std::string line = command + '\n';
        if (::send(file, line.data(), line.size(), MSG_NOSIGNAL)
            != static_cast<ssize_t>(line.size()))
            throw failure("the service does not take commands");
        const timeval patience{60, 0};
        ::setsockopt(file, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        char byte = 0;
        while (answer.size() < lineBound && ::read(file, &byte, 1) == 1 && byte != '\n')
            answer.push_back(byte);
        if (byte != '\n')
            throw std::runtime_error("the service did not answer");
    } catch (...) {
        ::close(file);
        throw;
    }
    ::close(file);
    return answer;
}

} // namespace zvx
