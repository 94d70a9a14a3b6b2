#pragma once

#include <string>
#include <string_view>

namespace zvx {

/// A PNG of the QR code that holds `text`: black on white, with the quiet zone around it that
/// readers need, at least 400 pixels wide, readable with 15 % of it damaged. Throws
/// std::runtime_error for a text that no code can hold, some 2,300 bytes.
std::string qrPicture(std::string_view text);

} // namespace zvx
