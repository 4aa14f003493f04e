#pragma once

#include "core/HttpResponseReader.h"

#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <expected>
#include <functional>

namespace ostrelle
{

struct HttpRequest {
    QUrl url;
    QList<std::pair<QByteArray, QByteArray>> headers = {};
    std::optional<QByteArray> body = std::nullopt; // with one it is a POST, without one a GET
    std::chrono::milliseconds deadline;            // for the whole exchange
    // How long the other side may stay silent; without a value, until the deadline.
    std::optional<std::chrono::milliseconds> silence = std::nullopt;
};

// An answer with whatever status, or why none came.
using HttpResult = std::expected<HttpAnswer, QString>;

// One request and its answer on a connection of its own. Deletes itself when it is done.
class HttpExchange : public QObject
{
public:
    using Done = std::function<void(const HttpResult &)>;

    // Never calls `done` before it returns.
    HttpExchange(HttpRequest request, qsizetype maxBodyBytes, Done done, QObject *owner);
    ~HttpExchange() override;

    // Closes the connection without calling `done`; what `done` holds is released at once.
    void abort();

private:
    void connectSocket();
    void receive();
    void writeRequest();
    void take(HttpResponseReader::State state);
    void finish(const HttpResult &result);

    const HttpRequest m_request;
    QTimer m_silence;
    HttpResponseReader m_reader;
    Done m_done;
    const std::unique_ptr<QTcpSocket> m_socket;
};

} // namespace ostrelle
