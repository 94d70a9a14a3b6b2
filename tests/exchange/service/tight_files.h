#pragma once

#include <csignal>
#include <cstdint>
#include <stdexcept>

#include <sys/resource.h>

namespace zvxtest {

/// Files of this process that may not grow beyond `bytes` for a while: as good as a full disk.
class TightFiles
{
public:
    explicit TightFiles(std::uintmax_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        if (::getrlimit(RLIMIT_FSIZE, &m_usual) != 0)
            throw std::runtime_error("no limit of files");
        rlimit tight = m_usual;
        tight.rlim_cur = bytes;
        if (::setrlimit(RLIMIT_FSIZE, &tight) != 0)
            throw std::runtime_error("the limit of files cannot be set");
    }
    ~TightFiles()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_usual);
        std::signal(SIGXFSZ, m_handler);
    }
    TightFiles(const TightFiles &) = delete;
    TightFiles &operator=(const TightFiles &) = delete;

private:
    rlimit m_usual{};
    void (*m_handler)(int);
};

} // namespace zvxtest
