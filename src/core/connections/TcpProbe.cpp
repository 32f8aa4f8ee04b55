#include "core/connections/TcpProbe.h"

#include "core/base/VantryError.h"

#include <QDeadlineTimer>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace TcpProbe {

#ifdef Q_OS_UNIX

namespace {

// One address: 0 when it accepted, else the errno of the failure (ETIMEDOUT when time ran out).
int tryAddress(const addrinfo *address, QDeadlineTimer deadline)
{
    const int fd = ::socket(address->ai_family, address->ai_socktype | SOCK_CLOEXEC, address->ai_protocol);
    if (fd < 0)
        return errno;
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    int result = 0;
    if (::connect(fd, address->ai_addr, address->ai_addrlen) != 0) {
        result = errno;
        if (result == EINPROGRESS) {
            pollfd p{fd, POLLOUT, 0};
            int ready;
            do {
                ready = ::poll(&p, 1, int(qMax<qint64>(0, deadline.remainingTime())));
            } while (ready < 0 && errno == EINTR);
            if (ready == 0) {
                result = ETIMEDOUT;
            } else {
                socklen_t length = sizeof result;
                ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &result, &length);
            }
        }
    }
    ::close(fd);
    return result;
}

} // namespace

void requireReachable(const QString &host, int port, int timeoutSeconds)
{
    const QDeadlineTimer deadline(qint64(timeoutSeconds) * 1000);
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *addresses = nullptr;
    const QByteArray service = QByteArray::number(port);
    const int lookup = ::getaddrinfo(host.toUtf8().constData(), service.constData(), &hints, &addresses);
    if (lookup != 0)
        throw VantryError(QStringLiteral("Cannot resolve the host %1: %2.").arg(host, QString::fromLocal8Bit(::gai_strerror(lookup))));
    int error = 0;
    for (const addrinfo *a = addresses; a; a = a->ai_next) {
        error = tryAddress(a, deadline);
        if (error == 0 || deadline.hasExpired())
            break;
    }
    ::freeaddrinfo(addresses);
    if (error == ETIMEDOUT)
        throw VantryError(QStringLiteral("The server %1 did not answer on port %2 within %3 seconds.")
                              .arg(host).arg(port).arg(timeoutSeconds));
    if (error != 0)
        throw VantryError(QStringLiteral("Cannot connect to %1 on port %2: %3.")
                              .arg(host).arg(port).arg(QString::fromLocal8Bit(std::strerror(error))));
}

#else

// Other systems rely on the client's own time-out until a probe is written for them.
void requireReachable(const QString &, int, int) {}

#endif

} // namespace TcpProbe
