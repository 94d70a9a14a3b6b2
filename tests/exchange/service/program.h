#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace zvxtest {

/// The program as a child process, with pipes on its three ends.
class Program
{
public:
    enum Input { Pipe, Nothing };

    explicit Program(std::vector<std::string> arguments, Input input = Pipe);
    ~Program();
    Program(const Program &) = delete;

    void closeInput();
    void signal(int number) const;
    bool isRunning();
    pid_t pid() const { return m_child; }

    /// The exit code, -1 after a signal.
    int wait();

    /// The port of the first line of output. Throws std::runtime_error where none comes.
    std::uint16_t port();

    std::string output;
    std::string errors;

private:
    /// Reads what is there. False when both ends are empty.
    bool drain();

    pid_t m_child = -1;
    int m_in = -1;
    int m_out = -1;
    int m_err = -1;
    std::optional<int> m_status;
};

} // namespace zvxtest
