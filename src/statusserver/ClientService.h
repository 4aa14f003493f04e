#pragma once

#include "platform/Files.h"
#include "statusserver/Response.h"
#include "statusserver/ServerLimits.h"
#include "statusserver/Site.h"
#include "statusserver/WaitingRoom.h"
#include "statusserver/Workers.h"

#include <array>
#include <asio/io_context.hpp>
#include <functional>
#include <optional>
#include <string_view>

namespace ostrelle
{

// Serves one connection after the other: one receive, one answer, the end. What is there at once is
// served at once; a socket is watched only while there is something to wait for. I/O thread only.
class ClientService
{
public:
    // Runs a task on a thread that may wait, unless the service is gone before its turn comes.
    using RunSlowly = std::function<void(Workers::Task)>;

    ClientService(asio::io_context &loop, const Site &site, const ServerLimits &limits,
                  RunSlowly runSlowly);

    void handleClient(Descriptor client);

    // Drops the client that has been silent for longest; false when none is.
    bool dropSilent() { return m_silent.dropOldest(); }

private:
    // A client whose request is known, and what is to become of it.
    struct Recipient {
        Descriptor socket;
        bool sendsMore = false; // than the receive that is answered, as far as one can tell
        std::optional<WaitingRoom::Deadline> answerDeadline{}; // once it has to wait
    };

    void answer(Recipient client, std::string_view received);
    void answerSlowly(Recipient client, const Route &route, std::string_view requestText);
    void send(Recipient client, std::string_view bytes);
    void sendRest(Recipient client, Response response);
    void finish(Recipient client);
    void discard(Descriptor socket, int turnsLeft);

    asio::io_context &m_loop;
    const Site &m_site;
    const RunSlowly m_runSlowly;
    WaitingRoom m_silent;
    WaitingRoom m_unread;
    // One of each for all clients: what is in them is used up before the next client's turn.
    std::array<char, 4096> m_received{};
    Response m_response;
};

} // namespace ostrelle
