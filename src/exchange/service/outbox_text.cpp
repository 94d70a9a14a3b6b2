#include "exchange/service/outbox_text.h"

#include "exchange/accounts/outbox.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zvx {

namespace {

namespace fs = std::filesystem;

/// A file that is open for reading, or not there.
class ReadFile
{
public:
    explicit ReadFile(fs::path path)
        : m_path(std::move(path)), m_file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        if (m_file < 0 && errno != ENOENT)
            fail();
    }
    ~ReadFile()
    {
        if (m_file >= 0)
            ::close(m_file);
    }
    ReadFile(const ReadFile &) = delete;
    ReadFile &operator=(const ReadFile &) = delete;

    bool isThere() const { return m_file >= 0; }

    /// Keeps writers off. False where the path names another file by now.
    bool lock() const
    {
        struct stat opened {
        };
        struct stat named {
        };
        if (::flock(m_file, LOCK_SH) != 0 || ::fstat(m_file, &opened) != 0)
            fail();
        return ::stat(m_path.c_str(), &named) == 0 && named.st_ino == opened.st_ino
            && named.st_dev == opened.st_dev;
    }

    std::string text() const
    {
        std::string text;
        char bytes[16'384];
        for (ssize_t count = 1; isThere() && count != 0;) {
            count = ::read(m_file, bytes, sizeof bytes);
            if (count < 0 && errno != EINTR)
                fail();
            text.append(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
        }
        return text;
    }

private:
    [[noreturn]] void fail() const
    {
        throw std::runtime_error("cannot read " + m_path.string() + ": " + std::strerror(errno));
    }

    fs::path m_path;
    int m_file;
};

} // namespace

std::string outboxText(const fs::path &folder)
{
    for (;;) {
        const ReadFile newest(folder / Outbox::kFileName);
        // A full outbox is renamed under its lock: with the lock held, the two files fit.
        if (newest.isThere() && !newest.lock())
            continue;
        return ReadFile(folder / Outbox::kOldFileName).text() + newest.text();
    }
}

} // namespace zvx
