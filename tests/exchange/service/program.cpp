#include "exchange/service/program.h"

#include "exchange/service/until.h"

#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zvxtest {

using namespace std::chrono_literals;

Program::Program(std::vector<std::string> arguments, Input input)
{
    int in[2];
    int out[2];
    int err[2];
    if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipes");
    arguments.insert(arguments.begin(), ZVX_PROGRAM);
    std::vector<char *> list;
    for (std::string &argument : arguments)
        list.push_back(argument.data());
    list.push_back(nullptr);
    m_child = ::fork();
    if (m_child == 0) {
        ::dup2(input == Pipe ? in[0] : ::open("/dev/null", O_RDONLY), STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        ::execv(ZVX_PROGRAM, list.data());
        ::_exit(127);
    }
    for (const int end : {in[0], out[1], err[1]})
        ::close(end);
    m_in = in[1];
    m_out = out[0];
    m_err = err[0];
}

Program::~Program()
{
    if (!m_status) {
        ::kill(m_child, SIGKILL);
        wait();
    }
    closeInput();
    ::close(m_out);
    ::close(m_err);
}

void Program::closeInput()
{
    if (m_in >= 0)
        ::close(m_in);
    m_in = -1;
}

void Program::signal(int number) const
{
    ::kill(m_child, number);
}

bool Program::isRunning()
{
    drain();
    int status = 0;
    if (!m_status && ::waitpid(m_child, &status, WNOHANG) == m_child)
        m_status = status;
    return !m_status;
}

int Program::wait()
{
    until([&] { return !isRunning(); }, 60s);
    if (!m_status)
        return -2;
    while (drain()) { }
    return WIFEXITED(*m_status) ? WEXITSTATUS(*m_status) : -1;
}

std::uint16_t Program::port()
{
    until(
        [&] {
            drain();
            return output.find('\n') != std::string::npos || !isRunning();
        },
        60s);
    if (output.substr(0, 5) != "PORT ")
        throw std::runtime_error("the program does not serve: " + errors);
    return static_cast<std::uint16_t>(std::stoi(output.substr(5)));
}

bool Program::drain()
{
    bool any = false;
    pollfd files[2] = {{m_out, POLLIN, 0}, {m_err, POLLIN, 0}};
    ::poll(files, 2, 0);
    for (int i = 0; i < 2; ++i) {
        char bytes[4096];
        const ssize_t count
            = (files[i].revents & POLLIN) ? ::read(files[i].fd, bytes, sizeof bytes) : 0;
        if (count > 0)
            (i == 0 ? output : errors).append(bytes, static_cast<std::size_t>(count));
        any = any || count > 0;
    }
    return any;
}

} // namespace zvxtest
