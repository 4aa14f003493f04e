#include "statusserver/Acceptor.h"

#include "platform/Log.h"
#include "statusserver/Listener.h"
#include "statusserver/RunLoop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <span>
#include <sys/socket.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// How many connections are served before those who waited for something else get their turn.
constexpr int maxAcceptsPerTurn = 64;

// To find room for a newcomer among the descriptors.
constexpr int mostTriesForRoom = 16;

// After this long there may be descriptors or memory again.
constexpr std::chrono::milliseconds pauseAfterError{50};

// Of descriptors or memory.
constexpr std::array shortages = {EMFILE, ENFILE, ENOBUFS, ENOMEM};

// What accept() passes on although it concerns one connection only.
constexpr std::array errorsOfOneClient = {ECONNABORTED, ENETDOWN,   EPROTO, ENOPROTOOPT,
                                          EHOSTDOWN,    ENONET,     EPERM,  EHOSTUNREACH,
                                          EOPNOTSUPP,   ENETUNREACH};

bool isOneOf(std::span<const int> errors, int error)
{
    return std::ranges::find(errors, error) != errors.end();
}

bool isReadable(int socket)
{
    pollfd request{.fd = socket, .events = POLLIN, .revents = 0};
    return ::poll(&request, 1, 0) > 0;
}

} // namespace

Acceptor::Acceptor(asio::io_context &loop, const ServerState &state, int maxDescriptors,
                   OnClient onClient, MakeRoom makeRoom)
    : m_state(state)
    , m_maxDescriptors(maxDescriptors)
    , m_onClient(std::move(onClient))
    , m_makeRoom(std::move(makeRoom))
    , m_serverSocket(loop)
    , m_pause(loop)
{
}

bool Acceptor::open(Descriptor &serverSocket)
{
    asio::error_code error;
    m_serverSocket.assign(serverSocket.get(), error);
    if (error) {
        logLine(u"[StatusServer] Accept error: "_s + QString::fromStdString(error.message()));
        return false;
    }
    static_cast<void>(serverSocket.release()); // m_serverSocket owns it now
    waitForClients();
    return true;
}

void Acceptor::close(int serverSocket)
{
    if (m_serverSocket.is_open() && m_serverSocket.native_handle() == serverSocket) {
        asio::error_code ignored;
        m_serverSocket.close(ignored);
        m_pause.cancel();
    }
}

void Acceptor::waitForClients()
{
    m_serverSocket.async_wait(WatchedDescriptor::wait_read, [this](const asio::error_code &error) {
        if (!error && m_serverSocket.is_open()) {
            acceptAll();
        }
    });
}

void Acceptor::acceptAll()
{
    for (int accepted = 0; accepted < maxAcceptsPerTurn; ++accepted) {
        // One call, so that no child process can inherit the connection in between.
        Descriptor client(::accept4(m_serverSocket.native_handle(), nullptr, nullptr,
                                    SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!client) {
            handleError(errno);
            return;
        }
        client = withinBound(std::move(client));
        if (client) {
            handOn(std::move(client));
        }
    }
    waitForClients();
}

// The kernel hands out the lowest number that is free, so a high one says how many are in use. The
// newcomer takes the number of whoever makes way: what is above stays free for the whole program.
Descriptor Acceptor::withinBound(Descriptor client) const
{
    if (client.get() < m_maxDescriptors) {
        return client;
    }
    // Another thread may be quicker to take that number.
    for (int attempt = 0; attempt < mostTriesForRoom && m_makeRoom(); ++attempt) {
        Descriptor lower(::fcntl(client.get(), F_DUPFD_CLOEXEC, 0));
        if (lower && lower.get() < m_maxDescriptors) {
            return lower;
        }
    }
    return Descriptor();
}

// A client that cannot be served, for want of memory or a thread, must not end the accepting.
void Acceptor::handOn(Descriptor client)
{
    try {
        m_onClient(std::move(client));
    } catch (const std::exception &error) {
        logDropped(error);
    }
}

void Acceptor::handleError(int error)
{
    // Without a free descriptor the kernel does not even look whether somebody waits.
    const bool isShortage = isOneOf(shortages, error);
    const bool nobodyWaits = isShortage && !isReadable(m_serverSocket.native_handle());
    if (error == EAGAIN || error == EINTR || nobodyWaits) {
        m_errorTold = m_errorTold && error != EAGAIN;
        waitForClients();
        return;
    }
    if (!m_state.running()) {
        return;
    }
    if (!m_errorTold) {
        logLine(u"[StatusServer] Accept error: "_s + systemText(error));
        m_errorTold = true;
    }
    if (isShortage && m_makeRoom()) {
        waitForClients();
    } else if (isShortage || isOneOf(errorsOfOneClient, error)) {
        pause();
    }
}

void Acceptor::pause()
{
    m_pause.expires_after(pauseAfterError);
    m_pause.async_wait([this](const asio::error_code &error) {
        if (!error && m_serverSocket.is_open()) {
            acceptAll();
        }
    });
}

} // namespace ostrelle
