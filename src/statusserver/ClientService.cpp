#include "statusserver/ClientService.h"

#include "platform/Heap.h"

#include <algorithm>
#include <asio/post.hpp>
#include <cerrno>
#include <sys/socket.h>

namespace ostrelle
{

namespace
{

// Of a request that comes in more than one receive.
constexpr std::size_t maxDiscardedBytes = std::size_t{1024} * 1024; // a turn
constexpr int maxDiscardTurns = 16;

constexpr std::size_t largeAnswer = std::size_t{256} * 1024;
constexpr int slowReadersBuffer = 64 * 1024;

constexpr std::string_view requestEnd = "\r\n\r\n";

bool mustWait()
{
    return errno == EAGAIN; // Linux knows EWOULDBLOCK as the same
}

// The count of bytes that went out at once, or -1.
ssize_t sendSome(int socket, std::string_view bytes)
{
    return ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

} // namespace

ClientService::ClientService(asio::io_context &loop, const Site &site, const ServerLimits &limits,
                             const SlowWork &slowWork)
    : m_loop(loop)
    , m_site(site)
    , m_limits(limits)
    , m_slowWork(slowWork)
    , m_historyRequests(limits.maxHistoryRequests)
    , m_silent(loop)
    , m_unread(loop)
{
    for (const Resource resource : {Resource::AgentStatus, Resource::Projects, Resource::Cron,
                                    Resource::Preflight, Resource::Health, Resource::Unknown}) {
        if (const std::string *const path = site.documentPath(resource)) {
            m_documents.try_emplace(resource, loop, *path, m_memory, limits.untilReading,
                                    slowWork.readDocument);
        } else {
            m_fixedAnswers.emplace(resource, m_memory.keep({fixedAnswer(resource)}));
        }
    }
}

void ClientService::handleClient(Descriptor client)
{
    const ssize_t count = ::recv(client.get(), m_received.data(), m_received.size(), MSG_DONTWAIT);
    if (count > 0) {
        const std::string_view received(m_received.data(), static_cast<std::size_t>(count));
        const bool complete = received.size() < m_received.size() && received.ends_with(requestEnd);
        answer({std::move(client), !complete}, received);
    } else if (count < 0 && mustWait()) {
        m_silent.enter(std::move(client), WaitingRoom::WaitFor::wait_read,
                       std::chrono::steady_clock::now() + m_limits.untilRequest,
                       [this](Descriptor socket) { handleClient(std::move(socket)); });
    }
}

void ClientService::answer(Recipient client, std::string_view received)
{
    const Request request = parseRequest(received);
    const auto [resource, limit] = route(request);
    if (resource == Resource::History) {
        answerHistory(std::move(client), limit, request.text);
    } else if (const auto document = m_documents.find(resource); document != m_documents.end()) {
        answerDocument(std::move(client), document->second);
    } else {
        send(std::move(client), m_fixedAnswers.at(resource));
    }
}

void ClientService::answerDocument(Recipient client, ServedDocument &document)
{
    if (SharedResponse answer = document.atHand()) {
        send(std::move(client), std::move(answer));
        return;
    }
    document.wait([this, client = std::move(client)](SharedResponse answer) mutable {
        send(std::move(client), std::move(answer));
    });
}

// A request for which there is no room is dropped: a crowd must not wait in memory for what hangs.
void ClientService::answerHistory(Recipient client, int limit, std::string_view requestText)
{
    const PassLimit::Pass place = m_historyRequests.begin();
    if (!place) {
        return;
    }
    m_slowWork.readHistory([this, place, client = std::move(client), limit,
                            text = std::string(requestText)](const std::stop_token &stop) mutable {
        SharedResponse answer = m_memory.keep({m_site.serveHistory(limit, text, stop)});
        trimHeap();
        asio::post(m_loop,
                   [this, client = std::move(client), answer = std::move(answer)]() mutable {
                       send(std::move(client), std::move(answer));
                   });
    });
}

void ClientService::send(Recipient client, SharedResponse answer)
{
    client.answer = std::move(answer);
    if (client.answer->bytes().size() > largeAnswer) {
        // The kernel's own buffer of megabytes would hold the answer once more for each client, and
        // it tells of progress when a third has gone out, which is too late for a slow reader.
        ::setsockopt(client.socket.get(), SOL_SOCKET, SO_SNDBUF, &slowReadersBuffer,
                     sizeof slowReadersBuffer);
    }
    sendRest(std::move(client));
}

// Sends what the socket takes and comes back when it takes more.
void ClientService::sendRest(Recipient client)
{
    const std::string_view rest = client.answer->bytes().substr(client.sent);
    const ssize_t sent = sendSome(client.socket.get(), rest);
    if (sent < 0 && !mustWait()) {
        return;
    }
    if (sent == static_cast<ssize_t>(rest.size())) {
        finish(std::move(client));
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (client.begin == Time()) {
        client.begin = now;
    }
    if (sent > 0) {
        client.sent += static_cast<std::size_t>(sent);
        client.lastProgress = now;
    }
    waitForReader(std::move(client));
}

void ClientService::waitForReader(Recipient client)
{
    boundMemory(*client.answer);
    const auto deadline = deadlineOf(client);
    Descriptor socket = std::move(client.socket);
    m_unread.enter(std::move(socket), WaitingRoom::WaitFor::wait_write, deadline,
                   [this, client = std::move(client)](Descriptor writable) mutable {
                       client.socket = std::move(writable);
                       sendRest(std::move(client));
                   });
}

// Who reads drop by drop would hold a large answer in memory for hours.
ClientService::Time ClientService::deadlineOf(const Recipient &client) const
{
    const auto slowest = std::chrono::milliseconds(1000 * client.sent / m_limits.slowestReading);
    return m_limits.untilReading +
           std::min(std::max(client.lastProgress, client.begin), client.begin + slowest);
}

// Those with the least time left make way. One answer may be larger than the bound: it is what
// somebody asked for.
void ClientService::boundMemory(const Response &next)
{
    const std::size_t bound = std::max(m_limits.maxAnswerBytes, next.storage.capacity());
    while (m_memory.bytes() > bound && m_unread.dropOldest()) {
    }
}

bool ClientService::dropOldest()
{
    return m_silent.dropOldest() || m_unread.dropOldest() ||
           std::ranges::any_of(m_documents,
                               [](auto &document) { return document.second.dropOldest(); });
}

// Closing with unread bytes would reset the connection, and the client might lose its answer.
void ClientService::finish(Recipient client)
{
    if (client.sendsMore && ::shutdown(client.socket.get(), SHUT_WR) == 0) {
        discard(std::move(client.socket), maxDiscardTurns);
    }
}

// Throws away what still comes until the client closes too, or has sent far too much.
void ClientService::discard(Descriptor socket, int turnsLeft)
{
    const ssize_t count =
        ::recv(socket.get(), nullptr, maxDiscardedBytes, MSG_DONTWAIT | MSG_TRUNC);
    if (turnsLeft > 0 && (count > 0 || (count < 0 && mustWait()))) {
        m_silent.enter(std::move(socket), WaitingRoom::WaitFor::wait_read,
                       std::chrono::steady_clock::now() + m_limits.untilRequest,
                       [this, turnsLeft](Descriptor readable) {
                           discard(std::move(readable), turnsLeft - 1);
                       });
    }
}

} // namespace ostrelle
