#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace zvx {

/// A file of the state folder that an operator may write, change and remove at any time.
class WatchedFile
{
public:
    enum class Look {
        Same, ///< as it was when it was looked at last
        Changed, ///< it is there, and is to be read
        Gone, ///< told once
    };

    /// What is longer than `bound` bytes is not read.
    WatchedFile(std::filesystem::path file, std::size_t bound);

    const std::filesystem::path &path() const { return m_file; }

    Look look();
    /// The text. Throws std::runtime_error with the reason where there is none.
    std::string read() const;

private:
    std::filesystem::path m_file;
    std::size_t m_bound;
    std::optional<std::filesystem::file_time_type> m_changed;
};

} // namespace zvx
