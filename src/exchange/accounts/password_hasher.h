#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zvx {

/// Turns passwords into what may be stored. Used by several threads at once.
class PasswordHasher
{
public:
    virtual ~PasswordHasher() = default;

    /// A text with its own salt, different at each call. Throws std::bad_alloc where there is no
    /// memory for the work.
    virtual std::string hash(std::string_view password) = 0;
    /// Whether `stored` was made of this password. Costs as much as hash() did, right or wrong.
    /// Throws std::bad_alloc as well.
    virtual bool verify(const std::string &stored, std::string_view password) = 0;
};

struct ArgonCost {
    unsigned long long operations; ///< passes over the memory
    std::size_t memory; ///< bytes

    static ArgonCost interactive(); ///< 64 MiB, some tens of milliseconds
    static ArgonCost least(); ///< what the algorithm needs at least, for tests
};

/// Argon2id.
class ArgonHasher : public PasswordHasher
{
public:
    explicit ArgonHasher(ArgonCost cost = ArgonCost::interactive());
    std::string hash(std::string_view password) override;
    bool verify(const std::string &stored, std::string_view password) override;

private:
    ArgonCost m_cost;
};

} // namespace zvx
