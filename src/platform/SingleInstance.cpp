#include "platform/SingleInstance.h"

#include "platform/Paths.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>

#include <sys/socket.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int answerMilliseconds = 2000;
constexpr int retryMilliseconds = 50;
constexpr qsizetype maxMessageBytes = 65536;
constexpr QByteArrayView received = "received\n";

// A digest, so that the socket's path fits into its 108 bytes, however long the home directory's
// is.
QString nameForHome()
{
    const QByteArray digest =
        QCryptographicHash::hash(homeDirectory().toUtf8(), QCryptographicHash::Sha256);
    return u"ostrelle-"_s + QString::fromLatin1(digest.first(8).toHex());
}

bool isSameUser(const QLocalSocket &peer)
{
    ucred credentials{};
    socklen_t size = sizeof credentials;
    return ::getsockopt(static_cast<int>(peer.socketDescriptor()), SOL_SOCKET, SO_PEERCRED,
                        &credentials, &size) == 0 &&
           credentials.uid == ::getuid();
}

// A message is one line, so that its end is seen without closing the connection.
SingleInstance::Role handOver(const QString &socketName, const QByteArray &message)
{
    QLocalSocket first;
    first.connectToServer(socketName);
    if (!first.waitForConnected(answerMilliseconds)) {
        return SingleInstance::Role::Refused;
    }
    first.write(message.toPercentEncoding() + '\n');
    while (!first.canReadLine()) {
        if (!first.waitForReadyRead(answerMilliseconds)) {
            return SingleInstance::Role::Refused;
        }
    }
    return first.readLine() == received ? SingleInstance::Role::HandedOver
                                        : SingleInstance::Role::Refused;
}

} // namespace

SingleInstance::SingleInstance(QObject *parent)
    : QObject(parent)
{
    const QString directory = runtimeDirectory().value_or(homeDirectory() + u"/.ostrelle"_s);
    QDir().mkpath(directory);
    m_socket = directory + u'/' + nameForHome();
    m_lock = std::make_unique<QLockFile>(m_socket + u".lock"_s);
    m_lock->setStaleLockTime(0); // only the holder's death frees it
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::receive);
}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::becomeFirst()
{
    if (!m_lock->tryLock() && m_lock->error() == QLockFile::LockFailedError) {
        return false;
    }
    // Whoever holds the lock may remove the socket of an instance that was killed. Where no lock
    // can be made, the program runs without one.
    QLocalServer::removeServer(m_socket);
    m_server.listen(m_socket);
    return true;
}

SingleInstance::Role SingleInstance::claim(const QByteArray &message)
{
    const QDeadlineTimer deadline(answerMilliseconds);
    while (true) {
        if (becomeFirst()) {
            return Role::First;
        }
        if (handOver(m_socket, message) == Role::HandedOver) {
            return Role::HandedOver;
        }
        if (deadline.hasExpired()) {
            return Role::Refused;
        }
        QThread::msleep(retryMilliseconds);
    }
}

void SingleInstance::release()
{
    m_server.close();
    m_lock->unlock();
}

void SingleInstance::receive()
{
    while (QLocalSocket *peer = m_server.nextPendingConnection()) {
        connect(peer, &QLocalSocket::disconnected, peer, &QObject::deleteLater);
        // A peer that says nothing is dropped after a while.
        QTimer::singleShot(answerMilliseconds, peer, &QLocalSocket::abort);
        if (!isSameUser(*peer)) {
            peer->abort();
            continue;
        }
        peer->setReadBufferSize(maxMessageBytes);
        const auto take = [this, peer] {
            if (peer->canReadLine()) {
                const QByteArray line = peer->readLine().trimmed();
                peer->write(received.toByteArray());
                peer->disconnectFromServer();
                Q_EMIT started(QByteArray::fromPercentEncoding(line));
            }
        };
        connect(peer, &QLocalSocket::readyRead, this, take);
        take();
    }
}

} // namespace ostrelle

#include "moc_SingleInstance.cpp"
