#include "ctl/Connection.h"

#include "control/ControlProtocol.h"
#include "platform/Files.h"
#include "platform/InstancePlaces.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace ostrelle
{

namespace
{

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto patience = 1s; // before a sign of life is asked for, and in the midst of an answer
constexpr auto signOfLife = 500ms;

// Qt Core has no sockets, and nothing else here needs the rest of Qt Network.
std::expected<Descriptor, Unreachable> connectTo(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.size() >= static_cast<qsizetype>(sizeof address.sun_path)) {
        return std::unexpected(Unreachable::NotRunning);
    }
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket || ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address),
                             sizeof address) != 0) {
        // Too many wait for one that takes nobody in.
        return std::unexpected(errno == EAGAIN ? Unreachable::NoAnswer : Unreachable::NotRunning);
    }
    if (!isPeerOurs(socket.get())) {
        return std::unexpected(Unreachable::Stranger);
    }
    return socket;
}

std::expected<Descriptor, Unreachable> connectToProgram()
{
    for (const QString &place : instanceSockets()) {
        auto socket = connectTo(place);
        if (socket || socket.error() != Unreachable::NotRunning) {
            return socket;
        }
    }
    return std::unexpected(Unreachable::NotRunning);
}

bool waitFor(int socket, short event, Clock::time_point deadline)
{
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd waiting{.fd = socket, .events = event, .revents = 0};
    return ::poll(&waiting, 1, static_cast<int>(std::max<long>(left, 0))) > 0;
}

bool say(int socket, QByteArrayView rest, Clock::time_point deadline)
{
    while (!rest.isEmpty() && waitFor(socket, POLLOUT, deadline)) {
        const ssize_t count =
            ::send(socket, rest.data(), static_cast<std::size_t>(rest.size()), MSG_NOSIGNAL);
        if (count < 0) {
            return false;
        }
        rest = rest.sliced(count);
    }
    return rest.isEmpty();
}

std::expected<QByteArray, Unreachable> hear(int socket, Clock::time_point deadline)
{
    QByteArray heard;
    std::array<char, 65536> piece{};
    const auto patiently = [&] {
        return heard.isEmpty() ? deadline : std::min(deadline, Clock::now() + patience);
    };
    while (heard.size() <= maxAnswerBytes && waitFor(socket, POLLIN, patiently())) {
        const ssize_t count = ::recv(socket, piece.data(), piece.size(), 0);
        if (count <= 0) {
            break;
        }
        const qsizetype before = heard.size();
        heard.append(piece.data(), count);
        if (const qsizetype end = heard.indexOf('\n', before); end >= 0) {
            return heard.first(end);
        }
    }
    return std::unexpected(Unreachable::NoAnswer);
}

// Whether who takes long works at all.
bool showsLife()
{
    const auto deadline = Clock::now() + signOfLife;
    const auto socket = connectToProgram();
    const QByteArray greeting = ControlRequest{.command = QStringLiteral("hello")}.toLine();
    return socket && say(socket->get(), greeting + '\n', deadline) &&
           hear(socket->get(), deadline).has_value();
}

} // namespace

std::expected<QByteArray, Unreachable> sayToProgram(const QByteArray &line,
                                                    std::chrono::milliseconds within)
{
    const auto began = Clock::now();
    const auto socket = connectToProgram();
    if (!socket) {
        return std::unexpected(socket.error());
    }
    if (!say(socket->get(), line + '\n', began + patience)) {
        return std::unexpected(Unreachable::NoAnswer);
    }
    if (!waitFor(socket->get(), POLLIN, began + patience) && !showsLife()) {
        return std::unexpected(Unreachable::NoAnswer);
    }
    return hear(socket->get(), began + within);
}

} // namespace ostrelle
