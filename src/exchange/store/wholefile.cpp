#include "exchange/store/wholefile.h"

#include "exchange/store/exchange.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace zvx {
namespace {

namespace fs = std::filesystem;

/// A file descriptor that closes itself.
class File
{
public:
    File(const fs::path &path, int flags)
        : m_path(path), m_file(::open(path.c_str(), flags | O_CLOEXEC, 0600))
    {
        if (m_file < 0)
            fail();
    }
    ~File() { ::close(m_file); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    void write(std::string_view text)
    {
        while (!text.empty()) {
            const ssize_t written = ::write(m_file, text.data(), text.size());
            if (written < 0)
                fail();
            text.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    void sync()
    {
        if (::fsync(m_file) != 0)
            fail();
    }

private:
    [[noreturn]] void fail() const
    {
        throw FolderError(m_path.string() + ": " + std::strerror(errno));
    }

    fs::path m_path;
    int m_file;
};

} // namespace

void writeWhole(const fs::path &path, std::string_view text)
{
    fs::path draft = path;
    draft += ".new";
    {
        File file(draft, O_WRONLY | O_CREAT | O_TRUNC);
        file.write(text);
        file.sync();
    }
    if (::rename(draft.c_str(), path.c_str()) != 0)
        throw FolderError(path.string() + ": " + std::strerror(errno));
    syncFolder(path.parent_path());
}

void syncFolder(const fs::path &folder)
{
    File(folder, O_RDONLY | O_DIRECTORY).sync();
}

} // namespace zvx
