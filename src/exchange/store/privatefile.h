#pragma once

#include <filesystem>

namespace zvx {

/// Makes the file where it is missing, and readable and writable by its owner alone in any case.
/// SQLite would make it readable for everybody; its log and index take the file's mode. Throws
/// StoreError.
void makePrivate(const std::filesystem::path &file);

} // namespace zvx
