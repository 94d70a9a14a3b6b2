#pragma once

#include "exchange/service/http_message.h"

#include <optional>
#include <string_view>

namespace zvx {

/// The picture of a bank, of a file name such as "chenghu.png", or nothing. The pictures travel
/// inside the program.
std::optional<HttpAnswer> bankPicture(std::string_view file);

/// The bytes of one PNG by the bank's id; empty where there is none.
std::string_view bankPictureBytes(std::string_view bank);

} // namespace zvx
