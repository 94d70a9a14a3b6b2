#include "client/display.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QList>
#include <QtGlobal>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int patienceMs = 3000;
constexpr int firstPort = 6000; // of display :0 over TCP

// True when somebody takes a connection at the address within the patience.
bool answers(int family, const sockaddr *address, socklen_t size)
{
    const int file = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (file < 0)
        return false;
    bool isTaken = ::connect(file, address, size) == 0;
    pollfd ready{file, POLLOUT, 0};
    if (!isTaken && errno == EINPROGRESS && ::poll(&ready, 1, patienceMs) == 1) {
        int error = 0;
        socklen_t length = sizeof error;
        isTaken = (ready.revents & POLLOUT) != 0
            && ::getsockopt(file, SOL_SOCKET, SO_ERROR, &error, &length) == 0 && error == 0;
    }
    ::close(file);
    return isTaken;
}

// A path that begins with a zero byte is an abstract one.
bool answersAt(const QByteArray &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= int(sizeof address.sun_path))
        return false;
    std::memcpy(address.sun_path, path.constData(), std::size_t(path.size()));
    return answers(AF_UNIX, reinterpret_cast<const sockaddr *>(&address),
                   socklen_t(offsetof(sockaddr_un, sun_path) + std::size_t(path.size())));
}

bool answersAt(const QByteArray &host, int port)
{
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (::getaddrinfo(host.constData(), QByteArray::number(port).constData(), &wanted, &found) != 0)
        return false;
    bool isTaken = false;
    for (const addrinfo *each = found; each && !isTaken; each = each->ai_next)
        isTaken = answers(each->ai_family, each->ai_addr, each->ai_addrlen);
    ::freeaddrinfo(found);
    return isTaken;
}

// A name such as ":0", ":0.1", "unix:0" or "host:10.0".
bool isXThere(const QByteArray &name)
{
    const int colon = name.lastIndexOf(':');
    if (colon < 0)
        return false;
    bool isNumber = false;
    const int number = name.mid(colon + 1).split('.').first().toInt(&isNumber);
    if (!isNumber || number < 0 || number > 65535 - firstPort)
        return false;
    const QByteArray host = name.left(colon);
    if (!host.isEmpty() && host != "unix")
        return answersAt(host, firstPort + number);
    const QByteArray path = "/tmp/.X11-unix/X" + QByteArray::number(number);
    return answersAt(path) || answersAt('\0' + path);
}

bool isWaylandThere(const QByteArray &name)
{
    const QDir plugins(QLibraryInfo::location(QLibraryInfo::PluginsPath)
                       + QStringLiteral("/platforms"));
    if (name.isEmpty() || plugins.entryList({QStringLiteral("libqwayland-*.so")}).isEmpty())
        return false;
    return answersAt(name.startsWith('/') ? name : qgetenv("XDG_RUNTIME_DIR") + '/' + name);
}

} // namespace

bool display::isThere()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return true;
    return isXThere(qgetenv("DISPLAY")) || isWaylandThere(qgetenv("WAYLAND_DISPLAY"));
}
