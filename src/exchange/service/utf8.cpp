#include "exchange/service/utf8.h"

#include <cstddef>

namespace zvx {

bool isUtf8(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (std::size_t i = 0; i < text.size();) {
        const unsigned lead = byte(i);
        if (lead < 0x80) {
            ++i;
            continue;
        }
        const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        if (lead < 0xC2 || lead > 0xF4 || i + length > text.size())
            return false;
        // The second byte carries the bounds against overlong forms, surrogates and the end of
        // the code space; the others are plain continuations.
        const unsigned second = byte(i + 1);
        const unsigned least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const unsigned most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        if (second < least || second > most)
            return false;
        for (std::size_t k = 2; k < length; ++k) {
            if (byte(i + k) < 0x80 || byte(i + k) > 0xBF)
                return false;
        }
        i += length;
    }
    return true;
}

} // namespace zvx
