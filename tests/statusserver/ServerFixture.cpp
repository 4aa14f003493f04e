#include "statusserver/ServerFixture.h"

#include <QSignalSpy>
#include <QTest>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace ostrelle;

RawClient::RawClient(int port, int receiveBufferBytes)
    : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const timeval patience{.tv_sec = 10, .tv_usec = 0};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (receiveBufferBytes > 0) {
        ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVBUF, &receiveBufferBytes, sizeof(int));
    }
    // Low numbers are the server's, which is in the same process and may not use high ones.
    if (const int high = ::fcntl(m_socket.get(), F_DUPFD_CLOEXEC, 512); high >= 0) {
        m_socket = Descriptor(high);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    // Not the address that everybody names: other machines use others, too.
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);
    address.sin_port = htons(static_cast<quint16>(port));
    m_connected = ::connect(m_socket.get(), reinterpret_cast<const sockaddr *>(&address),
                            sizeof address) == 0;
}

bool RawClient::send(const QByteArray &bytes)
{
    return ::send(m_socket.get(), bytes.constData(), static_cast<std::size_t>(bytes.size()),
                  MSG_NOSIGNAL) == bytes.size();
}

void RawClient::finishSending()
{
    ::shutdown(m_socket.get(), SHUT_WR);
}

QByteArray RawClient::read(qsizetype atMost)
{
    QByteArray bytes(atMost, Qt::Uninitialized);
    const ssize_t count = ::recv(m_socket.get(), bytes.data(), static_cast<std::size_t>(atMost), 0);
    return count < 0 ? QByteArray() : bytes.first(count);
}

std::optional<QByteArray> RawClient::readAll()
{
    QByteArray all;
    while (true) {
        const QByteArray some = read(65536);
        if (some.isNull()) {
            return std::nullopt;
        }
        if (some.isEmpty()) {
            return all;
        }
        all += some;
    }
}

ServerFixture::ServerFixture(const ServerLimits &limits)
{
    OstrelleConfig::ensureTrackerFiles(OstrelleConfig::defaults());
    restart(config(), limits);
}

void ServerFixture::restart(const OstrelleConfig &config, const ServerLimits &limits)
{
    server = std::make_unique<StatusServer>(config, home.settings().tokens, limits);
    const QSignalSpy changes(server.get(), &StatusServer::runningChanged);
    server->start();
    QTRY_COMPARE(changes.count(), 1);
    QVERIFY(server->running());
}

QByteArray ServerFixture::ask(const QByteArray &request) const
{
    RawClient client(server->port());
    client.send(request);
    return client.readAll().value_or(QByteArray());
}

QByteArray ServerFixture::get(const QByteArray &target) const
{
    return ask("GET " + target + " HTTP/1.1\r\nHost: localhost\r\n\r\n");
}

OstrelleConfig ServerFixture::config() const
{
    OstrelleConfig config = OstrelleConfig::defaults();
    config.ports.status = 0;
    return config;
}

void ServerFixture::writeSession(const QByteArray &log, const QString &name) const
{
    home.write(QStringLiteral(".duskrell/agents/main/sessions/") + name, log);
}

QByteArray jsonAnswer(const QByteArray &status, const QByteArray &body)
{
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: application/json\r\nAccess-Control-Allow-Origin: *"
           "\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

QByteArray bodyOf(const QByteArray &answer)
{
    const qsizetype end = answer.indexOf("\r\n\r\n");
    return end < 0 ? QByteArray() : answer.sliced(end + 4);
}

QByteArray messageLine(const QByteArray &text, const QByteArray &role)
{
    return R"({"type":"message","timestamp":"t","message":{"role":")" + role + R"(","content":")" +
           text + "\"}}\n";
}
