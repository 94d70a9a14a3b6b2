#include "support/scratchfolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

ScratchFolder::ScratchFolder(const std::filesystem::path &parent)
{
    const auto place = parent.empty() ? std::filesystem::temp_directory_path() : parent;
    std::string name = (place / "zvbench-XXXXXX").string();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error(name + ": " + std::strerror(errno));
    m_path = name;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}
