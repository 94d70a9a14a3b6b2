#include "serving/childprocess.h"

#include "support/stopwatch.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void fail(const std::string &what)
{
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

int listenSomewhere(std::uint16_t &port)
{
    const int file = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (file < 0 || ::bind(file, reinterpret_cast<sockaddr *>(&address), size) != 0
        || ::listen(file, SOMAXCONN) != 0
        || ::getsockname(file, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        fail("cannot listen");
    port = ntohs(address.sin_port);
    return file;
}

void addTo(int poll, int file)
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = file;
    ::epoll_ctl(poll, EPOLL_CTL_ADD, file, &event);
}

[[noreturn]] void serveBare(int listener, const std::string &answer, const std::string &told)
{
    const int poll = ::epoll_create1(EPOLL_CLOEXEC);
    addTo(poll, listener);
    std::vector<int> parked;
    std::string buffer(16 * 1024, '\0');
    epoll_event events[256];
    while (true) {
        const int count = ::epoll_wait(poll, events, 256, -1);
        for (int i = 0; i < count; ++i) {
            const int file = events[i].data.fd;
            if (file == listener) {
                const int client = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
                const int on = 1;
                ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
                addTo(poll, client);
                continue;
            }
            const ssize_t bytes = ::recv(file, buffer.data(), buffer.size(), 0);
            if (bytes <= 0) {
                ::close(file);
                continue;
            }
            const bool parks = bytes > 5 && buffer.compare(0, 6, "GET /p") == 0;
            const bool tells = bytes > 5 && buffer.compare(0, 6, "GET /t") == 0;
            if (parks) {
                parked.push_back(file);
                continue;
            }
            if (tells) {
                for (const int each : parked)
                    ::send(each, told.data(), told.size(), MSG_NOSIGNAL);
                parked.clear();
            }
            ::send(file, answer.data(), answer.size(), MSG_NOSIGNAL);
        }
    }
}

// The child must not outlive a bench that is stopped.
void endWithParent()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace

ChildProcess::~ChildProcess()
{
    stop();
}

double ChildProcess::cpu() const
{
    clockid_t clock{};
    if (::clock_getcpuclockid(m_child, &clock) != 0)
        return 0;
    return static_cast<double>(Stopwatch::nanoseconds(clock)) / 1e6;
}

void ChildProcess::stop()
{
    if (m_child <= 0)
        return;
    ::kill(m_child, SIGTERM);
    ::waitpid(m_child, nullptr, 0);
    m_child = -1;
}

ServiceProcess::ServiceProcess(const std::filesystem::path &state,
                               const std::vector<std::string> &arguments)
{
    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0)
        fail("no pipe");
    std::vector<std::string> words = {ZVX_PROGRAM, "serve", "--state", state.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> list;
    for (std::string &word : words)
        list.push_back(word.data());
    list.push_back(nullptr);
    m_child = ::fork();
    if (m_child == 0) {
        endWithParent();
        ::dup2(out[1], STDOUT_FILENO);
        // Its log is in the state folder, too.
        ::dup2(::open("/dev/null", O_WRONLY), STDERR_FILENO);
        ::execv(ZVX_PROGRAM, list.data());
        ::_exit(127);
    }
    ::close(out[1]);
    std::string line;
    char c = 0;
    while (::read(out[0], &c, 1) == 1 && c != '\n')
        line.push_back(c);
    ::close(out[0]);
    if (line.rfind("PORT ", 0) != 0) {
        stop();
        throw std::runtime_error(std::string(ZVX_PROGRAM) + " does not serve; its log is in "
                                 + state.string());
    }
    m_port = static_cast<std::uint16_t>(std::atoi(line.c_str() + 5));
}

BareServer::BareServer(const std::string &answer, const std::string &told)
{
    const int listener = listenSomewhere(m_port);
    m_child = ::fork();
    if (m_child == 0) {
        endWithParent();
        ::signal(SIGTERM, SIG_DFL);
        serveBare(listener, answer, told);
    }
    ::close(listener);
}
