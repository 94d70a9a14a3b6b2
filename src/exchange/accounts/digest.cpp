#include "exchange/accounts/digest.h"

#include <sodium.h>

#include <stdexcept>

namespace zvx {

struct Digest::State {
    crypto_generichash_state hash;
};

void startSodium()
{
    static const int started = sodium_init();
    if (started < 0)
        throw std::runtime_error("libsodium cannot be used on this machine");
}

namespace {

const unsigned char *bytes(std::string_view text)
{
    return reinterpret_cast<const unsigned char *>(text.data());
}

} // namespace

Digest::Digest(std::size_t size, std::string_view key)
    : m_state(std::make_unique<State>()), m_size(size)
{
    startSodium();
    crypto_generichash_init(&m_state->hash, key.empty() ? nullptr : bytes(key), key.size(), size);
}

Digest::~Digest()
{
    sodium_memzero(&m_state->hash, sizeof m_state->hash);
}

Digest &Digest::operator<<(std::string_view part)
{
    *this << static_cast<std::int64_t>(part.size());
    crypto_generichash_update(&m_state->hash, bytes(part), part.size());
    return *this;
}

Digest &Digest::operator<<(std::int64_t part)
{
    unsigned char little[8];
    for (int i = 0; i < 8; ++i)
        little[i] = static_cast<unsigned char>(static_cast<std::uint64_t>(part) >> (8 * i));
    crypto_generichash_update(&m_state->hash, little, sizeof little);
    return *this;
}

std::string Digest::finish()
{
    std::string hash(m_size, '\0');
    crypto_generichash_final(&m_state->hash, reinterpret_cast<unsigned char *>(hash.data()),
                             m_size);
    return hash;
}

std::string hexText(std::string_view bytes)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char c : bytes) {
        text.push_back(digits[static_cast<unsigned char>(c) >> 4]);
        text.push_back(digits[static_cast<unsigned char>(c) & 15]);
    }
    return text;
}

bool sameBytes(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && sodium_memcmp(a.data(), b.data(), a.size()) == 0;
}

} // namespace zvx
