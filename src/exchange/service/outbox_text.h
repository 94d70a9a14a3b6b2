#pragma once

#include <filesystem>
#include <string>

namespace zvx {

/// The text messages that the service of a state folder has sent and the folder still holds, the
/// oldest first, a line each; empty where there are none. Messages may be sent meanwhile. Throws
/// std::runtime_error with one sentence where they cannot be read.
std::string outboxText(const std::filesystem::path &folder);

} // namespace zvx
