#include "exchange/service/key_text.h"

#include <cstdio>

namespace zvx {

std::string keyText(ActionKey key)
{
    char text[40];
    std::snprintf(text, sizeof text, "%016llx%016llx", static_cast<unsigned long long>(key.high),
                  static_cast<unsigned long long>(key.low));
    return text;
}

} // namespace zvx
