#include "Connection.h"

#include <QTcpSocket>

#include <utility>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto requestDeadline = 10s;
// Longer than a chat client waits, so that it is the client who gives up.
constexpr auto replyDeadline = 180s;
constexpr qint64 maxUnsentBytes = qint64{1024} * 1024;

} // namespace

Connection::Connection(QTcpSocket *socket, Answer answer, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_answer(std::move(answer))
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(maxHeadBytes + maxBodyBytes);
    connect(m_socket, &QTcpSocket::readyRead, this, &Connection::receive);
    connect(m_socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    m_deadline.callOnTimeout(m_socket, &QTcpSocket::abort);
    m_deadline.start(requestDeadline);
    m_pace.callOnTimeout(this, &Connection::sendNextByte);
}

void Connection::receive()
{
    const QByteArray data = m_socket->readAll();
    if (!m_answer) {
        return; // one request a connection
    }
    m_received += data;
    const auto request = parseRequest(m_received);
    if (request && !*request) {
        return;
    }
    const Answer answer = std::exchange(m_answer, nullptr);
    m_received.clear();
    m_deadline.start(replyDeadline);
    begin(request ? answer(**request)
                  : deliver(Reply::error(request.error(), u"The request cannot be read"_s)));
}

void Connection::begin(Delivery delivery)
{
    m_delivery = std::move(delivery);
    if (m_delivery.isSilent) {
        return;
    }
    if (m_delivery.pause > 0ms) {
        m_pace.start(m_delivery.pause);
        return;
    }
    m_socket->write(m_delivery.bytes);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &Connection::send);
    send();
}

void Connection::send()
{
    while (m_delivery.fillerBytes > 0 && m_socket->bytesToWrite() < maxUnsentBytes) {
        const qint64 size = qMin(m_delivery.fillerBytes, m_delivery.filler.size());
        m_socket->write(m_delivery.filler.constData(), size);
        m_delivery.fillerBytes -= size;
    }
    if (m_delivery.fillerBytes == 0) {
        m_socket->disconnectFromHost();
    }
}

void Connection::sendNextByte()
{
    m_socket->write(m_delivery.bytes.first(1));
    m_delivery.bytes.remove(0, 1);
    if (m_delivery.bytes.isEmpty()) {
        m_pace.stop();
        m_socket->disconnectFromHost();
    }
}

} // namespace ostrelle::simulator

#include "moc_Connection.cpp"
