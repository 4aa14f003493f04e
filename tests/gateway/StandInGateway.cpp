#include "gateway/StandInGateway.h"

#include <QSslSocket>

namespace
{

QByteArray pathOf(const QByteArray &request)
{
    return request.split(' ').value(1);
}

bool isWhole(const QByteArray &received)
{
    const qsizetype head = received.indexOf("\r\n\r\n");
    const qsizetype at = received.toLower().indexOf("content-length: ");
    const qsizetype body = at < 0 ? 0 : received.mid(at + 16, 10).split('\r').first().toInt();
    return head >= 0 && received.size() >= head + 4 + body;
}

} // namespace

StandInGateway::StandInGateway(const QHostAddress &address, quint16 port,
                               std::optional<QSslConfiguration> tls)
    : m_tls(std::move(tls))
{
    connect(this, &QTcpServer::newConnection, this, &StandInGateway::accept);
    if (!listen(address, port)) {
        qFatal("no stand-in gateway: %s", qPrintable(errorString()));
    }
}

QByteArray StandInGateway::response(int status, const QByteArray &body, const QByteArray &headers)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Whatever\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QByteArray StandInGateway::redirectTo(const QString &url)
{
    return response(307, {}, "Location: " + url.toUtf8() + "\r\n");
}

QString StandInGateway::url() const
{
    return QStringLiteral("%1://%2:%3")
        .arg(m_tls ? QStringLiteral("https") : QStringLiteral("http"), serverAddress().toString())
        .arg(serverPort());
}

void StandInGateway::answer(const QByteArray &path, const QByteArray &response)
{
    m_answers.insert(path, response);
}

QList<QByteArray> StandInGateway::requests(const QByteArray &path) const
{
    QList<QByteArray> wanted;
    for (const QByteArray &request : m_requests) {
        if (pathOf(request) == path) {
            wanted.append(request);
        }
    }
    return wanted;
}

void StandInGateway::incomingConnection(qintptr descriptor)
{
    if (!m_tls) {
        QTcpServer::incomingConnection(descriptor);
        return;
    }
    auto *const client = new QSslSocket(this);
    client->setSslConfiguration(*m_tls);
    client->setSocketDescriptor(descriptor);
    client->startServerEncryption();
    addPendingConnection(client);
}

void StandInGateway::accept()
{
    while (QTcpSocket *client = nextPendingConnection()) {
        connect(client, &QTcpSocket::readyRead, this, [this, client] { receive(client); });
        connect(client, &QTcpSocket::bytesWritten, this, [this, client] { keepFlooding(client); });
        connect(client, &QTcpSocket::disconnected, this, [this, client] {
            m_hanging.removeOne(client);
            client->deleteLater();
        });
    }
}

void StandInGateway::receive(QTcpSocket *client)
{
    if (!isWhole(client->peek(65536))) {
        return;
    }
    const QByteArray request = client->readAll();
    m_requests.append(request);
    const QByteArray answer = m_answers.value(pathOf(request), response(404));
    if (answer.isEmpty()) {
        m_hanging.append(client);
    }
    client->write(answer);
    keepFlooding(client);
    if (answer.startsWith("HTTP/1.0")) {
        client->disconnectFromHost(); // only the end tells how long such an answer is
    }
}

void StandInGateway::keepFlooding(QTcpSocket *client)
{
    if (client->bytesToWrite() == 0) {
        client->write(m_flood);
    }
}
