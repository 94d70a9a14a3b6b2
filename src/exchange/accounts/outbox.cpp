#include "exchange/accounts/outbox.h"

#include "exchange/accounts/secret.h"
#include "exchange/store/clock.h"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace zvx {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path &file)
{
    throw std::system_error(errno, std::generic_category(), file.string());
}

/// An open file that is closed with the object.
class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) { }
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    operator int() const { return m_number; }

private:
    int m_number;
};

std::string utc(TimeMs time)
{
    const std::time_t seconds = time.value() / 1000;
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char text[40];
    const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text + size, sizeof text - size, ".%03dZ", static_cast<int>(time.value() % 1000));
    return text;
}

void appendPlain(std::string &line, std::string_view text)
{
    for (const char c : text)
        line.push_back(static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? ' ' : c);
}

void syncFolder(const fs::path &folder)
{
    const Descriptor open(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (open < 0 || ::fsync(open) != 0)
        fail(folder);
}

/// Appends all of `line` or nothing.
void append(int file, const fs::path &path, off_t size, std::string_view line)
{
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t written = ::write(file, rest.data(), rest.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            const int reason = written < 0 ? errno : ENOSPC;
            if (::ftruncate(file, size) != 0) {
                // Half a line stays; the next message stands on a line with it.
            }
            errno = reason;
            fail(path);
        }
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    if (::fsync(file) != 0)
        fail(path);
}

} // namespace

Outbox::Outbox(fs::path folder, std::shared_ptr<Clock> clock, std::int64_t bound)
    : m_folder(std::move(folder)),
      m_clock(clock ? std::move(clock) : std::make_shared<SystemClock>()), m_bound(bound)
{
}

void Outbox::send(std::string_view phone, std::string_view text)
{
    std::string line = utc(m_clock->wall());
    line.reserve(line.size() + phone.size() + text.size() + 3);
    line.push_back('\t');
    appendPlain(line, phone);
    line.push_back('\t');
    appendPlain(line, text);
    line.push_back('\n');
    const struct Wiper {
        std::string &line;
        ~Wiper() { wipe(line.data(), line.size()); }
    } wiper{line};

    const fs::path path = m_folder / kFileName;
    for (;;) {
        const Descriptor file(
            ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (file < 0 || ::fchmod(file, 0600) != 0 || ::flock(file, LOCK_EX) != 0)
            fail(path);
        struct stat opened {
        };
        struct stat named {
        };
        if (::fstat(file, &opened) != 0)
            fail(path);
        // Another outbox may have renamed the file between opening and locking it.
        if (::stat(path.c_str(), &named) != 0 || named.st_ino != opened.st_ino
            || named.st_dev != opened.st_dev)
            continue;
        if (opened.st_size > 0
            && opened.st_size + static_cast<off_t>(line.size()) > static_cast<off_t>(m_bound)) {
            if (::rename(path.c_str(), (m_folder / kOldFileName).c_str()) != 0)
                fail(path);
            continue;
        }
        append(file, path, opened.st_size, line);
        if (opened.st_size == 0)
            syncFolder(m_folder);
        return;
    }
}

} // namespace zvx
