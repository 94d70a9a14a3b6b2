#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

// Makes a state folder before a service is started on it: a market of so many collections, and so
// many accounts that are signed in and have money and pieces. What would take minutes through the
// door (codes, passwords) is done with the service's own parts at their lowest cost.
class SeededState
{
public:
    // Each account holds pieces of the first `held` collections. Throws where something is refused.
    SeededState(const std::filesystem::path &folder, std::size_t collections, std::size_t accounts,
                std::size_t held);

    const std::filesystem::path &folder() const { return m_folder; }
    struct Trader {
        long long account = 0;
        std::string token; // of a session
    };
    const std::vector<Trader> &traders() const { return m_traders; }
    // The market's store.
    std::filesystem::path store() const;

    static constexpr int pieces = 1'000'000; // of each collection that is held

private:
    void openAccounts(std::size_t count);
    void fillPurses(std::size_t held) const;

    std::filesystem::path m_folder;
    std::vector<Trader> m_traders;
};
