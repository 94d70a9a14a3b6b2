#include "exchange/accounts/random_source.h"

#include "exchange/accounts/digest.h"

#include <sodium.h>

#include <algorithm>
#include <array>

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

Secret randomToken(RandomSource &random, std::size_t bytes)
{
    constexpr int kVariant = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
    std::array<unsigned char, 32> drawn;
    bytes = std::min(bytes, drawn.size());
    random.fill(drawn.data(), bytes);
    char text[sodium_base64_ENCODED_LEN(32, kVariant)];
    sodium_bin2base64(text, sizeof text, drawn.data(), bytes, kVariant);
    Secret token{std::string_view(text)};
    wipe(text, sizeof text);
    wipe(drawn.data(), drawn.size());
    return token;
}

} // namespace zvx
