#pragma once

#include <filesystem>
#include <string>

// A fresh folder on the disk that is measured; goes with its object.
class ScratchFolder
{
public:
    // In `parent`, or where temporary files live when it is empty. Throws std::runtime_error.
    explicit ScratchFolder(const std::filesystem::path &parent = {});
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    const std::filesystem::path &path() const { return m_path; }

private:
    std::filesystem::path m_path;
};
