#include "exchange/service/word_ledger.h"

#include "exchange/service/key_text.h"
#include "exchange/store/wholefile.h"

#include <cerrno>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zvx {

WordLedger::WordLedger(std::filesystem::path file, const Reader &reader) : m_path(std::move(file))
{
    m_file = ::open(m_path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (m_file < 0)
        fail();
    try {
        if (::fchmod(m_file, 0600) != 0)
            fail();
        // Words on the disk are lost all the same where their file's name is not there.
        syncFolder(m_path.parent_path());
        read(reader);
    } catch (...) {
        ::close(m_file);
        throw;
    }
}

WordLedger::~WordLedger()
{
    ::close(m_file);
}

void WordLedger::fail() const
{
    throw std::system_error(errno, std::generic_category(), m_path.string());
}

/// All that the file holds. What cannot be read must not be taken for what is not there.
std::string WordLedger::contents() const
{
    struct stat facts {
    };
    if (::fstat(m_file, &facts) != 0)
        fail();
    std::string all(static_cast<std::size_t>(facts.st_size), '\0');
    std::size_t size = 0;
    while (size < all.size()) {
        const ssize_t part
            = ::pread(m_file, all.data() + size, all.size() - size, static_cast<off_t>(size));
        if (part < 0 && errno == EINTR)
            continue;
        if (part == 0)
            errno = EIO;
        if (part <= 0)
            fail();
        size += static_cast<std::size_t>(part);
    }
    return all;
}

void WordLedger::read(const Reader &reader)
{
    const std::string all = contents();
    // The service may have died within the last line.
    m_size = static_cast<off_t>(all.rfind('\n') + 1);
    if (static_cast<std::size_t>(m_size) != all.size()
        && (::ftruncate(m_file, m_size) != 0 || ::fsync(m_file) != 0))
        fail();
    std::istringstream lines(all.substr(0, static_cast<std::size_t>(m_size)));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = line.find(' ');
        const auto id = ActionKey::fromText(line.substr(0, blank));
        if (!id || blank == std::string::npos || !reader(*id, line.substr(blank + 1)))
            throw std::runtime_error(m_path.string() + " holds a line that does not belong there");
    }
}

void WordLedger::add(ActionKey id, std::string_view words)
{
    if (m_isTorn) {
        errno = EIO;
        fail();
    }
    const std::string line = keyText(id) + ' ' + std::string(words) + '\n';
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t written = ::write(m_file, rest.data(), rest.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            if (written == 0)
                errno = ENOSPC;
            takeBack();
        }
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    if (::fsync(m_file) != 0)
        takeBack();
    m_size += static_cast<off_t>(line.size());
}

/// Words that may not be on the disk must not be read at the next start either.
void WordLedger::takeBack()
{
    const int reason = errno;
    // What stands there now would run into the next line, so there is none.
    m_isTorn = ::ftruncate(m_file, m_size) != 0;
    errno = reason;
    fail();
}

} // namespace zvx
