#pragma once

#include "core/HttpExchange.h"

namespace ostrelle
{

// The URL of a gateway's endpoint, by plain concatenation; absent when that is no URL.
std::optional<QUrl> endpoint(const QString &baseUrl, const QString &path);

// The value of an Authorization header.
QByteArray bearer(const QString &token);

// Asks gateways over HTTP. Whatever the other side does, an exchange ends by its deadline and keeps
// no more than the client's limit. Redirects are followed within the same origin only, since
// requests carry tokens; one that leads elsewhere is itself the answer. No proxy is asked. Lives on
// one thread with an event loop.
//
// Why not QNetworkAccessManager: measured with Qt 6.4.2, its thread reads an endless response head
// byte by byte for as long as it is sent, deaf to abort(), and keeps all of it.
class HttpClient
{
public:
    static constexpr qsizetype defaultMaxBodyBytes = qsizetype{1024} * 1024;

    explicit HttpClient(qsizetype maxBodyBytes = defaultMaxBodyBytes)
        : m_maxBodyBytes(maxBodyBytes)
    {
    }

    // Never calls `done` before it returns, and not at all once the client is gone.
    void send(const HttpRequest &request, const HttpExchange::Done &done);

    // Gives up all exchanges that are under way, without calling their `done`.
    void abort();

private:
    void follow(const HttpRequest &request, int redirectsLeft, const HttpExchange::Done &done);

    const qsizetype m_maxBodyBytes;
    QObject m_exchanges; // owns those under way
};

} // namespace ostrelle
