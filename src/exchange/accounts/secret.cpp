#include "exchange/accounts/secret.h"

#include <sodium.h>

#include <cstring>
#include <utility>

namespace zvx {

Secret::Secret(std::string_view text)
{
    if (text.empty())
        return;
    m_text.reset(new char[text.size()]);
    m_size = text.size();
    std::memcpy(m_text.get(), text.data(), m_size);
}

Secret::~Secret()
{
    clear();
}

Secret::Secret(Secret &&other) noexcept
    : m_text(std::move(other.m_text)), m_size(std::exchange(other.m_size, 0))
{
}

Secret &Secret::operator=(Secret &&other) noexcept
{
    if (this != &other) {
        clear();
        m_text = std::move(other.m_text);
        m_size = std::exchange(other.m_size, 0);
    }
    return *this;
}

void Secret::clear()
{
    if (m_text)
        wipe(m_text.get(), m_size);
    m_text.reset();
    m_size = 0;
}

void wipe(void *memory, std::size_t size)
{
    sodium_memzero(memory, size);
}

} // namespace zvx
