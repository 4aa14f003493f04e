#include "statusserver/ClientService.h"

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

constexpr std::string_view requestEnd = "\r\n\r\n";

bool mustWait()
{
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

// The count of bytes that went out at once, or -1.
ssize_t sendSome(int socket, std::string_view bytes)
{
    return ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

} // namespace

ClientService::ClientService(asio::io_context &loop, const Site &site, const ServerLimits &limits,
                             RunSlowly runSlowly)
    : m_loop(loop)
    , m_site(site)
    , m_runSlowly(std::move(runSlowly))
    , m_silent(loop, limits.untilRequest)
    , m_unread(loop, limits.untilReading)
{
}

void ClientService::handleClient(Descriptor client)
{
    const ssize_t count = ::recv(client.get(), m_received.data(), m_received.size(), MSG_DONTWAIT);
    if (count > 0) {
        const std::string_view received(m_received.data(), static_cast<std::size_t>(count));
        const bool complete = received.size() < m_received.size() && received.ends_with(requestEnd);
        answer({std::move(client), !complete}, received);
    } else if (count < 0 && mustWait()) {
        m_silent.enter(std::move(client), WaitingRoom::WaitFor::wait_read, m_silent.newDeadline(),
                       [this](Descriptor socket) { handleClient(std::move(socket)); });
    }
}

void ClientService::answer(Recipient client, std::string_view received)
{
    const Request request = parseRequest(received);
    const Route target = route(request);
    if (m_site.answerQuickly(target, m_response)) {
        send(std::move(client), m_response.bytes());
    } else {
        answerSlowly(std::move(client), target, request.text);
    }
}

void ClientService::answerSlowly(Recipient client, const Route &route, std::string_view requestText)
{
    m_runSlowly([this, client = std::move(client), route,
                 text = std::string(requestText)](const std::stop_token &stop) mutable {
        Response response = m_site.answerSlowly(route, text, stop);
        asio::post(m_loop,
                   [this, client = std::move(client), response = std::move(response)]() mutable {
                       sendRest(std::move(client), std::move(response));
                   });
    });
}

void ClientService::send(Recipient client, std::string_view bytes)
{
    const ssize_t sent = sendSome(client.socket.get(), bytes);
    if (sent < 0 && !mustWait()) {
        return;
    }
    const std::string_view rest = bytes.substr(sent < 0 ? 0 : static_cast<std::size_t>(sent));
    if (rest.empty()) {
        finish(std::move(client));
    } else {
        sendRest(std::move(client), {std::string(rest)});
    }
}

// Sends what the socket takes and comes back when it takes more. The time for it is set once: a
// client that reads drop by drop would hold a large answer in memory for hours.
void ClientService::sendRest(Recipient client, Response response)
{
    const ssize_t sent = sendSome(client.socket.get(), response.bytes());
    if (sent < 0 && !mustWait()) {
        return;
    }
    response.begin += sent < 0 ? 0 : static_cast<std::size_t>(sent);
    if (response.bytes().empty()) {
        finish(std::move(client));
        return;
    }
    const auto deadline = client.answerDeadline.value_or(m_unread.newDeadline());
    m_unread.enter(std::move(client.socket), WaitingRoom::WaitFor::wait_write, deadline,
                   [this, sendsMore = client.sendsMore, deadline,
                    response = std::move(response)](Descriptor writable) mutable {
                       sendRest({std::move(writable), sendsMore, deadline}, std::move(response));
                   });
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
        m_silent.enter(std::move(socket), WaitingRoom::WaitFor::wait_read, m_silent.newDeadline(),
                       [this, turnsLeft](Descriptor readable) {
                           discard(std::move(readable), turnsLeft - 1);
                       });
    }
}

} // namespace ostrelle
