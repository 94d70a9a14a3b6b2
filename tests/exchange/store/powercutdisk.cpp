#include "exchange/store/powercutdisk.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace zvx::test {

struct PowerCutDisk::Vfs : sqlite3_vfs {
};

/// The functions that SQLite calls, in its C shape.
struct DiskCalls {
    struct Handle : sqlite3_file {
        PowerCutDisk *disk;
        PowerCutDisk::File *file;
    };

    static Handle &handle(sqlite3_file *file) { return *static_cast<Handle *>(file); }
    static PowerCutDisk &disk(sqlite3_vfs *vfs)
    {
        return *static_cast<PowerCutDisk *>(vfs->pAppData);
    }

    static int read(sqlite3_file *self, void *to, int size, sqlite3_int64 offset)
    {
        if (handle(self).disk->isOff())
            return SQLITE_IOERR_READ;
        const std::string &bytes = handle(self).file->now;
        const std::size_t from = std::min(static_cast<std::size_t>(offset), bytes.size());
        const std::size_t there = std::min(bytes.size() - from, static_cast<std::size_t>(size));
        std::memcpy(to, bytes.data() + from, there);
        if (there == static_cast<std::size_t>(size))
            return SQLITE_OK;
        std::memset(static_cast<char *>(to) + there, 0, static_cast<std::size_t>(size) - there);
        return SQLITE_IOERR_SHORT_READ;
    }

    static int write(sqlite3_file *self, const void *from, int size, sqlite3_int64 offset)
    {
        if (handle(self).disk->isOff())
            return SQLITE_IOERR_WRITE;
        // What is being written when the power fails reaches the disk as well, some of its sectors.
        const bool powered = handle(self).disk->use();
        std::string &bytes = handle(self).file->now;
        const std::size_t end = static_cast<std::size_t>(offset) + static_cast<std::size_t>(size);
        if (bytes.size() < end)
            bytes.resize(end);
        std::memcpy(bytes.data() + offset, from, static_cast<std::size_t>(size));
        return powered ? SQLITE_OK : SQLITE_IOERR_WRITE;
    }

    static int truncate(sqlite3_file *self, sqlite3_int64 size)
    {
        if (!handle(self).disk->use())
            return SQLITE_IOERR_TRUNCATE;
        handle(self).file->now.resize(static_cast<std::size_t>(size));
        return SQLITE_OK;
    }

    static int sync(sqlite3_file *self, int)
    {
        if (!handle(self).disk->use())
            return SQLITE_IOERR_FSYNC;
        if (!handle(self).disk->liesAbout(*handle(self).file))
            handle(self).file->safe = handle(self).file->now;
        return SQLITE_OK;
    }

    static int fileSize(sqlite3_file *self, sqlite3_int64 *size)
    {
        if (handle(self).disk->isOff())
            return SQLITE_IOERR_FSTAT;
        *size = static_cast<sqlite3_int64>(handle(self).file->now.size());
        return SQLITE_OK;
    }

    // One connection has the disk for itself: locks are granted, shared memory is its own.
    static int close(sqlite3_file *) { return SQLITE_OK; }
    static int lock(sqlite3_file *, int) { return SQLITE_OK; }
    static int checkLock(sqlite3_file *, int *held)
    {
        *held = 0;
        return SQLITE_OK;
    }
    static int control(sqlite3_file *, int, void *) { return SQLITE_NOTFOUND; }
    static int sectorSize(sqlite3_file *) { return static_cast<int>(PowerCutDisk::kSector); }
    static int characteristics(sqlite3_file *) { return 0; }
    static int mapShared(sqlite3_file *self, int index, int size, int extend,
                         void volatile **memory)
    {
        auto &shared = handle(self).file->shared;
        *memory = nullptr;
        if (shared.size() <= static_cast<std::size_t>(index)) {
            if (!extend)
                return SQLITE_OK;
            while (shared.size() <= static_cast<std::size_t>(index))
                shared.emplace_back(static_cast<std::size_t>(size));
        }
        *memory = shared[static_cast<std::size_t>(index)].data();
        return SQLITE_OK;
    }
    static int lockShared(sqlite3_file *, int, int, int) { return SQLITE_OK; }
    static void barrier(sqlite3_file *) { }
    static int unmapShared(sqlite3_file *self, int)
    {
        handle(self).file->shared.clear();
        return SQLITE_OK;
    }

    static const sqlite3_io_methods *methods()
    {
        static const sqlite3_io_methods table = {2,
                                                 close,
                                                 read,
                                                 write,
                                                 truncate,
                                                 sync,
                                                 fileSize,
                                                 lock,
                                                 lock,
                                                 checkLock,
                                                 control,
                                                 sectorSize,
                                                 characteristics,
                                                 mapShared,
                                                 lockShared,
                                                 barrier,
                                                 unmapShared,
                                                 nullptr,
                                                 nullptr};
        return &table;
    }

    static int open(sqlite3_vfs *vfs, const char *path, sqlite3_file *file, int flags,
                    int *outFlags)
    {
        file->pMethods = nullptr;
        PowerCutDisk &own = disk(vfs);
        const bool there = path && own.m_files.count(path) > 0;
        if (own.isOff() || !path || (!there && !(flags & SQLITE_OPEN_CREATE)))
            return SQLITE_CANTOPEN;
        Handle &opened = handle(file);
        opened.disk = &own;
        opened.file = &own.file(path);
        opened.pMethods = methods();
        if (outFlags)
            *outFlags = flags;
        return SQLITE_OK;
    }

    static int remove(sqlite3_vfs *vfs, const char *path, int)
    {
        if (!disk(vfs).use())
            return SQLITE_IOERR_DELETE;
        disk(vfs).m_files.erase(path);
        return SQLITE_OK;
    }

    static int access(sqlite3_vfs *vfs, const char *path, int, int *result)
    {
        if (disk(vfs).isOff())
            return SQLITE_IOERR_ACCESS;
        *result = disk(vfs).m_files.count(path) > 0;
        return SQLITE_OK;
    }

    static int fullPath(sqlite3_vfs *, const char *path, int size, char *full)
    {
        if (std::strlen(path) >= static_cast<std::size_t>(size))
            return SQLITE_CANTOPEN;
        std::strcpy(full, path);
        return SQLITE_OK;
    }

    static int randomness(sqlite3_vfs *vfs, int size, char *out)
    {
        for (int i = 0; i < size; ++i)
            out[i] = static_cast<char>(disk(vfs).m_random());
        return size;
    }
    static int sleep(sqlite3_vfs *, int microseconds) { return microseconds; }
    static int currentTime(sqlite3_vfs *, double *now)
    {
        *now = 2'458'849.5;
        return SQLITE_OK;
    }
    static int lastError(sqlite3_vfs *, int, char *) { return 0; }
};

PowerCutDisk::PowerCutDisk(std::uint32_t seed) : m_random(seed), m_vfs(std::make_unique<Vfs>())
{
    static int disks = 0;
    m_name = "power-cut-" + std::to_string(++disks);
    sqlite3_vfs &vfs = *m_vfs;
    std::memset(&vfs, 0, sizeof vfs);
    vfs.iVersion = 1;
    vfs.szOsFile = sizeof(DiskCalls::Handle);
    vfs.mxPathname = 512;
    vfs.zName = m_name.c_str();
    vfs.pAppData = this;
    vfs.xOpen = DiskCalls::open;
    vfs.xDelete = DiskCalls::remove;
    vfs.xAccess = DiskCalls::access;
    vfs.xFullPathname = DiskCalls::fullPath;
    vfs.xRandomness = DiskCalls::randomness;
    vfs.xSleep = DiskCalls::sleep;
    vfs.xCurrentTime = DiskCalls::currentTime;
    vfs.xGetLastError = DiskCalls::lastError;
    if (sqlite3_vfs_register(&vfs, 0) != SQLITE_OK)
        throw std::runtime_error("the disk cannot be registered");
}

PowerCutDisk::~PowerCutDisk()
{
    sqlite3_vfs_unregister(m_vfs.get());
}

void PowerCutDisk::powerOn()
{
    for (auto &[path, file] : m_files) {
        std::string survived = file->safe;
        const std::size_t size = std::max(file->now.size(), file->safe.size());
        for (std::size_t at = 0; at < size; at += kSector) {
            const auto sector = [at](const std::string &bytes) {
                return at < bytes.size() ? bytes.substr(at, kSector) : std::string();
            };
            const std::string fresh = sector(file->now);
            if (fresh == sector(file->safe))
                continue;
            if (m_random() % 2 == 0) {
                ++m_lostSectors;
                continue;
            }
            if (fresh.empty()) {
                // Cut off, and the new length reached the disk.
                survived.resize(std::min(survived.size(), std::max(at, file->now.size())));
                break;
            }
            if (survived.size() < at + fresh.size())
                survived.resize(at + fresh.size());
            survived.replace(at, fresh.size(), fresh);
        }
        file->now = file->safe = survived;
        file->shared.clear();
    }
    m_off = false;
    m_left = kNever;
}

void PowerCutDisk::erase()
{
    m_files.clear();
}

PowerCutDisk::File &PowerCutDisk::file(const std::string &path)
{
    auto &found = m_files[path];
    if (!found) {
        found = std::make_unique<File>();
        found->path = path;
    }
    return *found;
}

bool PowerCutDisk::liesAbout(const File &file) const
{
    return m_lying && file.path.size() >= m_lying->size()
        && file.path.compare(file.path.size() - m_lying->size(), m_lying->size(), *m_lying) == 0;
}

bool PowerCutDisk::use()
{
    if (m_off)
        return false;
    if (m_left == kNever)
        return true;
    if (m_left > 0) {
        --m_left;
        return true;
    }
    m_off = true;
    return false;
}

} // namespace zvx::test
