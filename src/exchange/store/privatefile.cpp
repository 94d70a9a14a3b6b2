#include "exchange/store/privatefile.h"

#include "exchange/store/store.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zvx {

void makePrivate(const std::filesystem::path &file)
{
    const int open = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    const bool done = open >= 0 && ::fchmod(open, 0600) == 0;
    const int reason = errno;
    if (open >= 0)
        ::close(open);
    if (!done)
        throw StoreError(file.string() + ": " + std::strerror(reason));
}

} // namespace zvx
