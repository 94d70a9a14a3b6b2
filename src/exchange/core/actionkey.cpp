#include "exchange/core/types.h"

namespace zvx {

namespace {

int digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

std::optional<ActionKey> ActionKey::fromText(std::string_view text)
{
    if (text.size() != 32)
        return std::nullopt;
    ActionKey key;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int value = digit(text[i]);
        if (value < 0)
            return std::nullopt;
        std::uint64_t &half = i < 16 ? key.high : key.low;
        half = half << 4 | static_cast<std::uint64_t>(value);
    }
    if (key.isNull())
        return std::nullopt;
    return key;
}

} // namespace zvx
