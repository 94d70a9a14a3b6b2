#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace zvxtest {

/// Bends texts of a corpus. The same seed gives the same texts on every machine.
class Mutator
{
public:
    /// `spice` is what is put between the bytes now and then.
    Mutator(std::uint32_t seed, std::vector<std::string> corpus, std::vector<std::string> spice);

    /// A text of the corpus with 1 to `most` changes.
    std::string next(std::size_t most = 6);
    /// 0 to `bound` - 1.
    std::size_t below(std::size_t bound) { return m_random() % bound; }
    /// The text in up to `most` pieces, none of them empty.
    std::vector<std::string> split(const std::string &text, std::size_t most);

private:
    const std::string &any(const std::vector<std::string> &list)
    {
        return list[below(list.size())];
    }
    void mutate(std::string &text);

    std::mt19937 m_random;
    std::vector<std::string> m_corpus;
    std::vector<std::string> m_spice;
};

/// What hostile and broken clients are known to send between the bytes of a right request, and
/// between those of a right form.
std::vector<std::string> requestSpice();
std::vector<std::string> formSpice();

/// How much is tried: ZV_FUZZ_SEED=N begins elsewhere, ZV_FUZZ_TIMES=N tries N times as much.
struct FuzzEffort {
    FuzzEffort();

    std::uint32_t seed = 20'200'101;
    int times = 1;

    /// "seed 20200101, case 17": for failures.
    std::string describe(int number) const;
};

} // namespace zvxtest
