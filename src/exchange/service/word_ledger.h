#pragma once

#include "exchange/core/types.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace zvx {

/**
 * Words that were given about things with an id, in a file to which lines are added: the id, a
 * blank, the words. One thread at a time.
 */
class WordLedger
{
public:
    /// Takes a line; false where its words are none of this ledger.
    using Reader = std::function<bool(ActionKey id, const std::string &words)>;

    /// Opens the file or makes it, its owner's alone, and reads it. A last line that is torn is cut
    /// off: nobody has heard its word. Throws std::runtime_error where the file cannot be read or
    /// holds something else.
    WordLedger(std::filesystem::path file, const Reader &reader);
    ~WordLedger();
    WordLedger(const WordLedger &) = delete;
    WordLedger &operator=(const WordLedger &) = delete;

    /// On the disk when this returns. Throws std::system_error, and the words are not in the file.
    void add(ActionKey id, std::string_view words);

private:
    [[noreturn]] void fail() const;
    std::string contents() const;
    void read(const Reader &reader);
    [[noreturn]] void takeBack();

    std::filesystem::path m_path;
    int m_file = -1;
    off_t m_size = 0;
    bool m_isTorn = false; ///< words that could not be taken back stand at its end
};

} // namespace zvx
