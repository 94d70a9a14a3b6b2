#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

/// Gives the lower-case pinyin initials under which a Chinese name is looked up: 长城 is "zc" and
/// "cc". Digits and Latin letters stay, everything else is left out. A character with several usual
/// readings gives all of them.
class Initials
{
public:
    /// No name has more readings than this in the index.
    static constexpr std::size_t maximumReadings = 16;

    /// Throws std::runtime_error when the transliteration data are not installed.
    Initials();
    ~Initials();
    Initials(const Initials &) = delete;
    Initials &operator=(const Initials &) = delete;

    /// All readings of `name` (UTF-8), the most usual first, each once; none for a name without
    /// any letter or digit. Not for two threads at a time.
    std::vector<std::string> of(std::string_view name) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zvx
