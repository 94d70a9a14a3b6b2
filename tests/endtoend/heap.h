#pragma once

#include <QtGlobal>

namespace endtoend {

// The bytes of the heap that are in use, as the allocator counts them. What is freed does not
// count, whether or not the process keeps it.
qint64 heapInUse();

} // namespace endtoend
