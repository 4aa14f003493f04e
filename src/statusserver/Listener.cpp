#include "statusserver/Listener.h"

#include <arpa/inet.h>
#include <cerrno>
#include <limits>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Room for a crowd that connects at once: with a short queue the kernel would let most of it wait
// for a second before it tries again.
constexpr int listenQueueLength = 4096;

std::unexpected<ListenProblem> failure(const QString &attempt, int error)
{
    return std::unexpected(ListenProblem{
        .logLine = u"[StatusServer] Failed to %1: %2"_s.arg(attempt, systemText(error)),
        .portTaken = error == EADDRINUSE});
}

// 0 or the errno value.
int bindTo(int socket, quint16 port)
{
    const sockaddr_in address{.sin_family = AF_INET,
                              .sin_port = htons(port),
                              .sin_addr = {.s_addr = htonl(INADDR_ANY)},
                              .sin_zero = {}};
    const auto *const general = reinterpret_cast<const sockaddr *>(&address);
    return ::bind(socket, general, sizeof address) == 0 ? 0 : errno;
}

int portOf(int socket)
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &length);
    return ntohs(address.sin_port);
}

} // namespace

std::expected<Listener, ListenProblem> listenOn(qint64 port)
{
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket) {
        return std::unexpected(ListenProblem{u"[StatusServer] Failed to create socket"_s});
    }
    const QString binding = u"bind to port %1"_s.arg(port);
    const int on = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (port < 0 || port > std::numeric_limits<quint16>::max()) {
        return failure(binding, EINVAL);
    }
    if (const int error = bindTo(socket.get(), static_cast<quint16>(port)); error != 0) {
        return failure(binding, error);
    }
    if (::listen(socket.get(), listenQueueLength) != 0) {
        const int error = errno; // two can be bound to a port, but only one can listen
        return failure(u"listen"_s, error);
    }
    const int actualPort = portOf(socket.get());
    return Listener{std::move(socket), actualPort};
}

QString systemText(int error)
{
    return QString::fromStdString(std::generic_category().message(error));
}

} // namespace ostrelle
