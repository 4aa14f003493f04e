#pragma once

#include "core/BackgroundWork.h"
#include "platform/Files.h"
#include "statusserver/AnswerMemory.h"
#include "statusserver/ServedDocument.h"
#include "statusserver/ServerLimits.h"
#include "statusserver/Site.h"
#include "statusserver/WaitingRoom.h"

#include <array>
#include <asio/io_context.hpp>
#include <map>
#include <string_view>

namespace ostrelle
{

// Serves one connection after the other: one receive, one answer, the end. What is there at once is
// served at once; a socket is watched only while there is something to wait for. I/O thread only.
class ClientService
{
public:
    using RunSlowly = ServedDocument::RunSlowly;

    // The documents and the history have threads of their own, so that neither waits for what hangs
    // in the other.
    struct SlowWork {
        RunSlowly readDocument;
        RunSlowly readHistory;
    };

    ClientService(asio::io_context &loop, const Site &site, const ServerLimits &limits,
                  const SlowWork &slowWork);

    void handleClient(Descriptor client);

    // Drops the client that has been silent for longest, or else the one that reads or waits for
    // longest; false when there is none.
    bool dropOldest();

private:
    using Time = WaitingRoom::Deadline;

    // A client whose request is known, and how far it has got with the answer.
    struct Recipient {
        Descriptor socket;
        bool sendsMore = false; // than the receive that is answered, as far as one can tell
        SharedResponse answer{};
        std::size_t sent = 0;
        Time begin{};        // of a wait for the client
        Time lastProgress{}; // likewise
    };

    void answer(Recipient client, std::string_view received);
    void answerDocument(Recipient client, ServedDocument &document);
    void answerHistory(Recipient client, int limit, std::string_view requestText);
    void send(Recipient client, SharedResponse answer);
    void sendRest(Recipient client);
    void waitForReader(Recipient client);
    Time deadlineOf(const Recipient &client) const;
    void boundMemory(const Response &next);
    void finish(Recipient client);
    void discard(Descriptor socket, int turnsLeft);

    asio::io_context &m_loop;
    const Site &m_site;
    const ServerLimits m_limits;
    const SlowWork m_slowWork;
    AnswerMemory m_memory;
    std::map<Resource, ServedDocument> m_documents;
    std::map<Resource, SharedResponse> m_fixedAnswers;
    PassLimit m_historyRequests;
    WaitingRoom m_silent;
    WaitingRoom m_unread;
    // One for all clients: what is in it is used up before the next client's turn.
    std::array<char, 4096> m_received{};
};

} // namespace ostrelle
