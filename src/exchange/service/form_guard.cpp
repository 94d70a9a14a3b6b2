#include "exchange/service/form_guard.h"

#include "exchange/accounts/digest.h"
#include "exchange/accounts/random_source.h"
#include "exchange/accounts/secret.h"

namespace zvx {

namespace {

constexpr std::size_t secretBytes = 32;
constexpr std::size_t tokenBytes = 16;

} // namespace

FormGuard::FormGuard() : m_secret(secretBytes, '\0')
{
    SystemRandom().fill(m_secret.data(), m_secret.size());
}

FormGuard::~FormGuard()
{
    wipe(m_secret.data(), m_secret.size());
}

std::string FormGuard::tokenOf(std::string_view link, std::string_view step) const
{
    Digest digest(tokenBytes, m_secret);
    digest << link << step;
    return hexText(digest.finish());
}

bool FormGuard::fits(std::string_view given, std::string_view link, std::string_view step) const
{
    return sameBytes(given, tokenOf(link, step));
}

} // namespace zvx
