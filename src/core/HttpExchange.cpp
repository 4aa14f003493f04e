#include "core/HttpExchange.h"

#include <QNetworkProxy>
#include <QSslSocket>

#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 readBufferBytes = qint64{64} * 1024;

bool isEncrypted(const QUrl &url)
{
    return url.scheme() == "https"_L1;
}

std::unique_ptr<QTcpSocket> socketFor(const QUrl &url)
{
    // Only where it is needed: the first one of its kind loads the TLS library.
    if (isEncrypted(url)) {
        return std::make_unique<QSslSocket>();
    }
    return std::make_unique<QTcpSocket>();
}

QByteArray headOf(const HttpRequest &request)
{
    const QByteArray path = request.url.path(QUrl::FullyEncoded).toLatin1();
    const QByteArray query = request.url.query(QUrl::FullyEncoded).toLatin1();
    QByteArray head = request.body ? "POST " : "GET ";
    head += (path.isEmpty() ? "/" : path) + (query.isEmpty() ? "" : "?" + query) + " HTTP/1.1\r\n";
    head +=
        "Host: " + request.url.authority(QUrl::FullyEncoded).section(u'@', -1).toLatin1() + "\r\n";
    head += "User-Agent: Ostrelle\r\nAccept: */*\r\nConnection: close\r\n";
    for (const auto &[name, value] : request.headers) {
        head += name + ": " + value + "\r\n";
    }
    if (request.body) {
        head += "Content-Length: " + QByteArray::number(request.body->size()) + "\r\n";
    }
    return head + "\r\n";
}

} // namespace

HttpExchange::HttpExchange(HttpRequest request, qsizetype maxBodyBytes, Done done, QObject *owner)
    : QObject(owner)
    , m_request(std::move(request))
    , m_reader(maxBodyBytes)
    , m_done(std::move(done))
    , m_socket(socketFor(m_request.url))
{
    const auto giveUp = [this] { finish(std::unexpected(u"The request timed out."_s)); };
    QTimer::singleShot(m_request.deadline, Qt::PreciseTimer, this, giveUp);
    m_silence.setTimerType(Qt::PreciseTimer);
    connect(&m_silence, &QTimer::timeout, this, giveUp);
    if (m_request.silence) {
        m_silence.start(*m_request.silence);
    }
    // Later, so that a failure at once is not reported from within the constructor.
    QMetaObject::invokeMethod(this, &HttpExchange::connectSocket, Qt::QueuedConnection);
}

HttpExchange::~HttpExchange()
{
    m_socket->disconnect(this); // its destructor may still emit signals
}

void HttpExchange::connectSocket()
{
    if (!m_done) {
        return; // given up meanwhile
    }
    const QUrl &url = m_request.url;
    if ((!isEncrypted(url) && url.scheme() != "http"_L1) || url.host().isEmpty()) {
        finish(std::unexpected(u"Unsupported URL."_s));
        return;
    }
    m_socket->setReadBufferSize(readBufferBytes);
    // The look-up of the system's proxy blocks for as long as its script takes, and the proxy would
    // read the token.
    m_socket->setProxy(QNetworkProxy::NoProxy);
    connect(m_socket.get(), &QTcpSocket::readyRead, this, &HttpExchange::receive);
    connect(m_socket.get(), &QTcpSocket::errorOccurred, this,
            [this](QAbstractSocket::SocketError error) {
                if (error == QAbstractSocket::RemoteHostClosedError) {
                    take(m_reader.close());
                } else {
                    finish(std::unexpected(m_socket->errorString()));
                }
            });
    if (auto *tls = qobject_cast<QSslSocket *>(m_socket.get())) {
        connect(tls, &QSslSocket::encrypted, this, &HttpExchange::writeRequest);
        tls->connectToHostEncrypted(url.host(), static_cast<quint16>(url.port(443)));
    } else {
        connect(m_socket.get(), &QTcpSocket::connected, this, &HttpExchange::writeRequest);
        m_socket->connectToHost(url.host(), static_cast<quint16>(url.port(80)));
    }
}

void HttpExchange::writeRequest()
{
    m_socket->write(headOf(m_request) + m_request.body.value_or(QByteArray()));
}

void HttpExchange::receive()
{
    if (m_silence.isActive()) {
        m_silence.start();
    }
    take(m_reader.feed(m_socket->readAll()));
}

void HttpExchange::take(HttpResponseReader::State state)
{
    switch (state) {
    case HttpResponseReader::State::Reading:
        return;
    case HttpResponseReader::State::Complete:
        finish(m_reader.answer());
        return;
    case HttpResponseReader::State::Malformed:
        finish(std::unexpected(u"The server's answer could not be understood."_s));
        return;
    }
}

void HttpExchange::finish(const HttpResult &result)
{
    if (!m_done) {
        return;
    }
    const Done done = std::exchange(m_done, nullptr);
    abort();
    done(result);
}

void HttpExchange::abort()
{
    m_done = nullptr; // whatever the socket still tells comes to nothing
    m_socket->abort();
    deleteLater();
}

} // namespace ostrelle
