#include "exchange/accounts/random_source.h"

#include "exchange/accounts/digest.h"

#include <sodium.h>

namespace zvx {

SystemRandom::SystemRandom()
{
    startSodium();
}

void SystemRandom::fill(void *to, std::size_t size)
{
    randombytes_buf(to, size);
}

std::uint32_t uniform(RandomSource &random, std::uint32_t bound)
{
    // 2^32 modulo bound: draws below it would make the first numbers likelier than the others.
    const std::uint32_t surplus = (0u - bound) % bound;
    std::uint32_t drawn = 0;
    do
        random.fill(&drawn, sizeof drawn);
    while (drawn < surplus);
    return drawn % bound;
}

} // namespace zvx
