#pragma once

#include <filesystem>
#include <optional>

namespace zvx {

/// Who holds a state folder.
struct LockHolder {
    long pid = 0;
    int port = 0; ///< 0 until the service listens
};

/**
 * The lock on a state folder: an flock on `zvexchange.lock`, which ends with the process however it
 * ends. The file holds the two lines "pid 4711" and "port 40123"; it stays behind, empty, after a
 * clean stop, since removing a locked file would let two services in.
 */
class StateLock
{
public:
    /// Takes the lock or throws FolderError, with the holder's pid and port where they are known.
    explicit StateLock(const std::filesystem::path &folder);
    ~StateLock();

    StateLock(const StateLock &) = delete;
    StateLock &operator=(const StateLock &) = delete;

    void announcePort(int port);

    /// Who holds the folder now, or nothing where nobody does.
    static std::optional<LockHolder> holder(const std::filesystem::path &folder);

    static constexpr const char *kFileName = "zvexchange.lock";

private:
    void write(int port);
    int m_file = -1;
};

} // namespace zvx
