#include "exchange/accounts/password_hasher.h"

#include "exchange/accounts/digest.h"

#include <sodium.h>

#include <cerrno>
#include <cstring>
#include <new>

namespace zvx {

ArgonCost ArgonCost::interactive()
{
    return {crypto_pwhash_OPSLIMIT_INTERACTIVE, crypto_pwhash_MEMLIMIT_INTERACTIVE};
}

ArgonCost ArgonCost::least()
{
    return {crypto_pwhash_OPSLIMIT_MIN, crypto_pwhash_MEMLIMIT_MIN};
}

ArgonHasher::ArgonHasher(ArgonCost cost) : m_cost(cost)
{
    startSodium();
}

std::string ArgonHasher::hash(std::string_view password)
{
    char text[crypto_pwhash_STRBYTES];
    // Parameters are in range, so memory is all that can be missing.
    if (crypto_pwhash_str_alg(text, password.data(), password.size(), m_cost.operations,
                              m_cost.memory, crypto_pwhash_ALG_ARGON2ID13)
        != 0)
        throw std::bad_alloc();
    return text;
}

bool ArgonHasher::verify(const std::string &stored, std::string_view password)
{
    errno = 0;
    if (crypto_pwhash_str_verify(stored.c_str(), password.data(), password.size()) == 0)
        return true;
    if (errno == ENOMEM)
        throw std::bad_alloc();
    return false;
}

} // namespace zvx
