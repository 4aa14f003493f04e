#pragma once

#include "platform/Files.h"
#include "statusserver/ServerState.h"
#include "statusserver/WatchedDescriptor.h"

#include <asio/steady_timer.hpp>
#include <functional>

namespace ostrelle
{

// Accepts connections from a listening socket and hands them on. I/O thread only.
class Acceptor
{
public:
    using OnClient = std::function<void(Descriptor)>;

    Acceptor(asio::io_context &loop, const ServerState &state, OnClient onClient);

    void open(Descriptor serverSocket);

    // Closes the given listening socket, unless another one is open by now.
    void close(int serverSocket);

private:
    void waitForClients();
    void acceptAll();
    void handleError(int error);
    void pause();

    const ServerState &m_state;
    const OnClient m_onClient;
    WatchedDescriptor m_serverSocket;
    asio::steady_timer m_pause;
    bool m_errorTold = false; // since the last success
};

} // namespace ostrelle
