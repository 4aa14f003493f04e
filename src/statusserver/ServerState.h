#pragma once

#include <functional>
#include <mutex>
#include <optional>

namespace ostrelle
{

// Where the server stands: idle, starting or serving. Shared by the main thread, which starts and
// stops, and the I/O thread, which opens the listener. Any thread.
class ServerState
{
public:
    // `changed` is called on the thread that changes `running` or `portTaken`, and must return at
    // once.
    void observe(std::function<void()> changed);

    bool running() const;
    bool startRequested() const;

    // The last start failed because another program listens on the port.
    bool portTaken() const;

    // The port that is listened on; 0 while not running.
    int port() const;

    // Idle to starting; the number of this start, or nothing when the server was not idle.
    std::optional<int> requestStart();

    // False once the start has come to its end, or was stopped: another one may be under way then.
    bool isUnderWay(int start) const;

    // Starting to serving; false when that start is no longer under way.
    bool enterServing(int start, int serverSocket, int port);

    // Starting to idle; true when the port is to be tried again, because it is taken and the start
    // is still under way.
    bool enterIdle(int start, bool portTaken);

    // Any state to idle. Connections are refused at once; the listening socket that is left to
    // close is returned, or -1.
    int stop();

private:
    bool isUnderWayLocked(int start) const;
    void tell() const;

    mutable std::mutex m_mutex;
    // protected by m_mutex
    std::function<void()> m_changed;
    int m_serverSocket = -1;
    int m_port = 0;
    int m_starts = 0;
    bool m_running = false;
    bool m_startRequested = false;
    bool m_portTaken = false;
};

} // namespace ostrelle
