#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace zvx {

/// A password, code or token: moved, never copied by accident, and wiped from memory when it goes.
/// It prints nowhere; whoever needs the characters asks for text().
class Secret
{
public:
    Secret() = default;
    /// Copies the characters; the original is the caller's to wipe, see wipe().
    explicit Secret(std::string_view text);
    ~Secret();

    Secret(Secret &&other) noexcept;
    Secret &operator=(Secret &&other) noexcept;
    Secret(const Secret &) = delete;
    Secret &operator=(const Secret &) = delete;

    /// A second one with the same characters.
    Secret copy() const { return Secret(text()); }

    /// Valid as long as this object is neither moved nor destroyed.
    std::string_view text() const { return {m_text.get(), m_size}; }
    bool empty() const { return m_size == 0; }

    /// Overwrites the characters and becomes empty.
    void clear();

private:
    std::unique_ptr<char[]> m_text;
    std::size_t m_size = 0;
};

/// Overwrites memory in a way that the compiler does not leave out.
void wipe(void *memory, std::size_t size);

} // namespace zvx
