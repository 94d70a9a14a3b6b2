#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace zvx::test {

/**
 * A disk in memory whose power can be cut, as a SQLite VFS.
 *
 * What was written since a file's last sync is in danger: a power cut keeps a random half of its
 * sectors and loses the others, and a file's new length counts only where one of the kept sectors
 * reaches it. After `operations` further writes, truncations and syncs the power fails, in the
 * middle of the operation that counts; every call fails from then on until powerOn().
 *
 * Used by one connection, from one thread at a time.
 */
class PowerCutDisk
{
public:
    static constexpr std::int64_t kNever = -1;
    static constexpr std::size_t kSector = 512;

    /// Registers the disk under a name of its own.
    explicit PowerCutDisk(std::uint32_t seed);
    ~PowerCutDisk();
    PowerCutDisk(const PowerCutDisk &) = delete;
    PowerCutDisk &operator=(const PowerCutDisk &) = delete;

    const std::string &name() const { return m_name; }

    void cutAfter(std::int64_t operations) { m_left = operations; }
    bool isOff() const { return m_off; }
    /// Decides what survived and gives the power back.
    void powerOn();

    /// Removes all files; none may be open.
    void erase();

    /// From now on the disk says "synced" and does nothing, for files whose names end so: what a
    /// check of durability has to notice.
    void lieAboutSyncs(const std::string &ending) { m_lying = ending; }

    /// Sectors that power cuts took away so far.
    std::uint64_t lostSectors() const { return m_lostSectors; }

private:
    friend struct DiskCalls;
    struct File {
        std::string path;
        std::string now; ///< as the program reads it
        std::string safe; ///< as of the last sync
        std::vector<std::vector<char>> shared; ///< memory of the write-ahead log's index
    };

    File &file(const std::string &path);
    bool liesAbout(const File &file) const;
    /// Counts an operation. False when the power is off, or fails now.
    bool use();

    std::string m_name;
    std::mt19937 m_random;
    std::map<std::string, std::unique_ptr<File>> m_files;
    std::int64_t m_left = kNever;
    bool m_off = false;
    std::optional<std::string> m_lying;
    std::uint64_t m_lostSectors = 0;
    struct Vfs;
    std::unique_ptr<Vfs> m_vfs;
};

} // namespace zvx::test
