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
    // Called when descriptors or memory are short; true when some were set free.
    using MakeRoom = std::function<bool()>;

    // Once the program has `maxDescriptors` open, a client comes in only where another one goes.
    Acceptor(asio::io_context &loop, const ServerState &state, int maxDescriptors,
             OnClient onClient, MakeRoom makeRoom);

    // Takes the socket over; false, leaving it where it is, when it cannot be watched.
    bool open(Descriptor &serverSocket);

    // Closes the given listening socket, unless another one is open by now.
    void close(int serverSocket);

private:
    void waitForClients();
    void acceptAll();
    Descriptor withinBound(Descriptor client) const;
    void handOn(Descriptor client);
    void handleError(int error);
    void pause();

    const ServerState &m_state;
    const int m_maxDescriptors;
    const OnClient m_onClient;
    const MakeRoom m_makeRoom;
    WatchedDescriptor m_serverSocket;
    asio::steady_timer m_pause;
    bool m_errorTold = false; // since everybody who waited was accepted
};

} // namespace ostrelle
