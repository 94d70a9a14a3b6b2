#include "exchange/service/watched_file.h"

#include <fstream>
#include <stdexcept>

namespace zvx {

WatchedFile::WatchedFile(std::filesystem::path file, std::size_t bound)
    : m_file(std::move(file)), m_bound(bound)
{
}

WatchedFile::Look WatchedFile::look()
{
    std::error_code error;
    const auto changed = std::filesystem::last_write_time(m_file, error);
    if (error) {
        const bool vanished = m_changed.has_value();
        m_changed.reset();
        return vanished ? Look::Gone : Look::Same;
    }
    if (m_changed == changed)
        return Look::Same;
    m_changed = changed;
    return Look::Changed;
}

std::string WatchedFile::read() const
{
    // Whoever opens a pipe waits for its other end.
    std::error_code error;
    if (!std::filesystem::is_regular_file(m_file, error))
        throw std::runtime_error("it is no file");
    std::ifstream in(m_file, std::ios::binary);
    if (!in)
        throw std::runtime_error("it cannot be read");
    std::string text(m_bound + 1, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    if (text.size() > m_bound)
        throw std::runtime_error("it is longer than " + std::to_string(m_bound / 1024) + " KiB");
    return text;
}

} // namespace zvx
