#include "exchange/store/statelock.h"

#include "exchange/store/exchange.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace zvx {
namespace {

constexpr int kAttempts = 30;

// The holder writes the file anew in one call; half a text would only lose the hint.
LockHolder readHolder(int file)
{
    char text[128] = {};
    LockHolder holder;
    const ssize_t size = ::pread(file, text, sizeof text - 1, 0);
    if (size > 0)
        std::sscanf(text, "pid %ld port %d", &holder.pid, &holder.port);
    return holder;
}

} // namespace

StateLock::StateLock(const std::filesystem::path &folder)
{
    const std::filesystem::path path = folder / kFileName;
    m_file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_file < 0)
        throw FolderError(path.string() + ": " + std::strerror(errno));
    int reason = 0;
    LockHolder holder;
    // Somebody who only asks for the holder has the lock for a moment. The file may name a holder
    // that was killed meanwhile, so a name proves nothing.
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (attempt > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (::flock(m_file, LOCK_EX | LOCK_NB) == 0) {
            write(0);
            return;
        }
        reason = errno;
        holder = readHolder(m_file);
    }
    ::close(m_file);
    if (reason != EWOULDBLOCK)
        throw FolderError(path.string() + ": " + std::strerror(reason));
    std::string text = folder.string() + ": another service works on this state folder";
    if (holder.pid > 0)
        text += ", process " + std::to_string(holder.pid);
    if (holder.port > 0)
        text += ", port " + std::to_string(holder.port);
    throw FolderError(text);
}

StateLock::~StateLock()
{
    if (::ftruncate(m_file, 0) != 0) {
        // Only the hint stays behind; the lock itself ends with the descriptor.
    }
    ::close(m_file);
}

void StateLock::announcePort(int port)
{
    write(port);
}

std::optional<LockHolder> StateLock::holder(const std::filesystem::path &folder)
{
    const int file = ::open((folder / kFileName).c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return std::nullopt;
    std::optional<LockHolder> found;
    if (::flock(file, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        found = readHolder(file);
    ::close(file);
    return found;
}

void StateLock::write(int port)
{
    const std::string text
        = "pid " + std::to_string(::getpid()) + "\nport " + std::to_string(port) + "\n";
    if (::ftruncate(m_file, 0) != 0
        || ::pwrite(m_file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
        throw FolderError(std::string(kFileName) + ": " + std::strerror(errno));
}

} // namespace zvx
