#include "platform/SingleInstance.h"

#include "platform/Paths.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QFile>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
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
constexpr std::size_t maxPathBytes = 4096;
constexpr QByteArrayView received = "received\n";

// Where only this user comes in, so that nobody else can hold the lock: below the home, where every
// session finds it, or, when that cannot be written to, in the session's own directory.
QString lockFile()
{
    const auto directory = privateHomeDirectory();
    return (directory ? *directory : runtimeDirectory().value_or(homeDirectory())) +
           u"/ostrelle.lock"_s;
}

// The socket's name fits its 108 bytes whatever the home directory is called.
QString socketName()
{
    const QByteArray digest =
        QCryptographicHash::hash(homeDirectory().toUtf8(), QCryptographicHash::Sha256);
    const QString directory =
        runtimeDirectory().value_or(privateHomeDirectory().value_or(homeDirectory()));
    return directory + u"/ostrelle-"_s + QString::fromLatin1(digest.first(8).toHex());
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
    , m_lockFile(lockFile())
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::receive);
}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::becomeFirst()
{
    // Only the holder's death, or release(), frees the lock.
    Descriptor lock(::open(QFile::encodeName(m_lockFile).constData(),
                           O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, ownerOnly));
    if (lock && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return false;
    }
    // Whoever holds the lock may clear away the socket of an instance that was killed. Where no
    // lock can be made, the program runs without it.
    const QString socket = socketName();
    QLocalServer::removeServer(socket);
    m_server.listen(socket);
    const QByteArray path = QFile::encodeName(socket);
    if (lock && ::ftruncate(lock.get(), 0) == 0) {
        // Where there is no room, later starts of the same session still know the socket.
        static_cast<void>(
            ::pwrite(lock.get(), path.constData(), static_cast<std::size_t>(path.size()), 0) < 0);
    }
    m_lock = std::move(lock);
    return true;
}

// In another session it may be in another directory than ours would be.
QString SingleInstance::socketOfTheFirst() const
{
    const auto told = readFile(m_lockFile, maxPathBytes);
    return told && !told->empty() ? QFile::decodeName(QByteArray::fromStdString(*told))
                                  : socketName();
}

SingleInstance::Role SingleInstance::claim(const QByteArray &message)
{
    // Whoever answers is there, also where its lock is gone, with the folder that it was in.
    if (handOver(socketName(), message) == Role::HandedOver) {
        return Role::HandedOver;
    }
    const QDeadlineTimer deadline(answerMilliseconds);
    while (true) {
        if (becomeFirst()) {
            return Role::First;
        }
        if (handOver(socketOfTheFirst(), message) == Role::HandedOver) {
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
    m_lock = Descriptor();
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
