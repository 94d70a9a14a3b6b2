#pragma once

#include "exchange/accounts/secret.h"

#include <cstddef>
#include <cstdint>

namespace zvx {

/// Where tokens and codes come from. Used by one thread at a time.
class RandomSource
{
public:
    virtual ~RandomSource() = default;
    virtual void fill(void *to, std::size_t size) = 0;
};

/// The machine's, fit for secrets.
class SystemRandom : public RandomSource
{
public:
    SystemRandom();
    void fill(void *to, std::size_t size) override;
};

/// A number from 0 to `bound` - 1, each as likely as the others; `bound` is at least 1.
std::uint32_t uniform(RandomSource &random, std::uint32_t bound);

/// So many random bytes as text of A-Z, a-z, 0-9, "-" and "_", six bits each. At most 32.
Secret randomToken(RandomSource &random, std::size_t bytes);

} // namespace zvx
