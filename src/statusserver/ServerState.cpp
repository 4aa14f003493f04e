#include "statusserver/ServerState.h"

#include <sys/socket.h>
#include <utility>

namespace ostrelle
{

void ServerState::observe(std::function<void()> changed)
{
    const std::scoped_lock lock(m_mutex);
    m_changed = std::move(changed);
}

bool ServerState::running() const
{
    const std::scoped_lock lock(m_mutex);
    return m_running;
}

bool ServerState::startRequested() const
{
    const std::scoped_lock lock(m_mutex);
    return m_startRequested;
}

bool ServerState::portTaken() const
{
    const std::scoped_lock lock(m_mutex);
    return m_portTaken;
}

int ServerState::port() const
{
    const std::scoped_lock lock(m_mutex);
    return m_port;
}

std::optional<int> ServerState::requestStart()
{
    const std::scoped_lock lock(m_mutex);
    if (m_startRequested || m_running) {
        return std::nullopt;
    }
    m_startRequested = true;
    return ++m_starts;
}

bool ServerState::isUnderWay(int start) const
{
    const std::scoped_lock lock(m_mutex);
    return isUnderWayLocked(start);
}

bool ServerState::enterServing(int start, int serverSocket, int port)
{
    const std::scoped_lock lock(m_mutex);
    if (!isUnderWayLocked(start)) {
        return false;
    }
    m_serverSocket = serverSocket;
    m_port = port;
    m_running = true;
    m_startRequested = false;
    m_portTaken = false;
    tell();
    return true;
}

bool ServerState::enterIdle(int start, bool portTaken)
{
    const std::scoped_lock lock(m_mutex);
    if (!isUnderWayLocked(start)) {
        return false;
    }
    m_startRequested = false;
    if (std::exchange(m_portTaken, portTaken) != portTaken) {
        tell();
    }
    return portTaken;
}

int ServerState::stop()
{
    const std::scoped_lock lock(m_mutex);
    const bool wasRunning = std::exchange(m_running, false);
    const bool portWasTaken = std::exchange(m_portTaken, false);
    m_startRequested = false;
    m_port = 0;
    if (m_serverSocket >= 0) {
        // The descriptor is closed on the I/O thread, which may be busy; nobody waits for it.
        ::shutdown(m_serverSocket, SHUT_RDWR);
    }
    if (wasRunning || portWasTaken) {
        tell();
    }
    return std::exchange(m_serverSocket, -1);
}

bool ServerState::isUnderWayLocked(int start) const
{
    return m_startRequested && m_starts == start;
}

void ServerState::tell() const
{
    if (m_changed) {
        m_changed();
    }
}

} // namespace ostrelle
