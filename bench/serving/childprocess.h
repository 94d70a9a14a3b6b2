#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

// A process of ours that is measured from outside.
class ChildProcess
{
public:
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    std::uint16_t port() const { return m_port; }
    // CPU time of all its threads so far, in milliseconds.
    double cpu() const;

    // Asks it to end and waits for that.
    void stop();

protected:
    ChildProcess() = default;

    pid_t m_child = -1;
    std::uint16_t m_port = 0;
};

// The exchange, serving a state folder.
class ServiceProcess : public ChildProcess
{
public:
    // Returns when it serves. Throws std::runtime_error.
    ServiceProcess(const std::filesystem::path &state, const std::vector<std::string> &arguments);
};

// The least that a server can do on a socket: an epoll loop that reads what has come, takes it for
// one whole request, and sends what it was given beforehand. A request for /park waits for one for
// /tell, after which the loop sends to all that wait.
class BareServer : public ChildProcess
{
public:
    BareServer(const std::string &answer, const std::string &told);
};
