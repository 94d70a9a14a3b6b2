#include "endtoend/heap.h"

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
// Of the sanitizer's runtime, whose header the compiler does not bring along.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

qint64 endtoend::heapInUse()
{
#if defined(__SANITIZE_ADDRESS__)
    return qint64(__sanitizer_get_current_allocated_bytes());
#else
    return qint64(mallinfo2().uordblks);
#endif
}
