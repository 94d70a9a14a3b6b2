#pragma once

#include <filesystem>
#include <string_view>

namespace zvx {

/// Writes a file, the owner's alone, that is there whole or not at all, whenever the power fails.
/// Throws FolderError.
void writeWhole(const std::filesystem::path &path, std::string_view text);

/// Makes sure that the disk holds the names that a folder holds. Throws FolderError.
void syncFolder(const std::filesystem::path &folder);

} // namespace zvx
