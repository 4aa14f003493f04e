#include "platform/SingleInstance.h"

#include "platform/InstancePlaces.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QLocalSocket>
#include <QSet>
#include <QThread>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int answerMilliseconds = 2000;
constexpr int retryMilliseconds = 50;
constexpr qsizetype maxClients = 32;
constexpr QByteArrayView received = "received";

// Whether somebody has taken the message. It is one line, so that its end is seen without closing
// the connection.
bool handOver(const QString &socketName, const QByteArray &message)
{
    QLocalSocket first;
    first.connectToServer(socketName);
    if (!first.waitForConnected(answerMilliseconds)) {
        return false;
    }
    first.write(message.toPercentEncoding() + '\n');
    while (!first.canReadLine()) {
        if (!first.waitForReadyRead(answerMilliseconds)) {
            return false;
        }
    }
    return first.readLine().trimmed() == received;
}

} // namespace

SingleInstance::SingleInstance(QObject *parent)
    : QObject(parent)
    , m_lockFile(instanceLockFile())
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
    const QString socket = instanceSocket();
    QLocalServer::removeServer(socket);
    m_server.listen(socket);
    const QByteArray path = QFile::encodeName(socket);
    if (lock && ::ftruncate(lock.get(), 0) == 0) {
        // Where there is no room, later starts of the same session still know the socket.
        [[maybe_unused]] const ssize_t written =
            ::pwrite(lock.get(), path.constData(), static_cast<std::size_t>(path.size()), 0);
    }
    m_lock = std::move(lock);
    return true;
}

SingleInstance::Role SingleInstance::claim(const QByteArray &message)
{
    // Whoever answers is there, also where its lock is gone, with the folder that it was in, or was
    // never to be had, on a disk without locks.
    for (const QString &socket : QSet{instanceSocket(), socketToldBy(m_lockFile)}) {
        if (handOver(socket, message)) {
            return Role::HandedOver;
        }
    }
    const QDeadlineTimer deadline(answerMilliseconds);
    while (!becomeFirst()) {
        if (handOver(socketToldBy(m_lockFile), message)) {
            return Role::HandedOver;
        }
        if (deadline.hasExpired()) {
            return Role::Refused;
        }
        QThread::msleep(retryMilliseconds);
    }
    return Role::First;
}

void SingleInstance::release()
{
    m_server.close();
    m_lock = Descriptor();
}

void SingleInstance::receive()
{
    while (QLocalSocket *peer = m_server.nextPendingConnection()) {
        if (!isPeerOurs(peer->socketDescriptor())) {
            peer->abort();
            peer->deleteLater();
            continue;
        }
        makeRoom();
        auto *const conversation = new Conversation(peer);
        connect(conversation, &Conversation::heard, this,
                [this, conversation] { hear(conversation); });
    }
}

// Too many clients are a program that has run wild: the oldest makes way for who comes next.
void SingleInstance::makeRoom()
{
    auto clients = m_server.findChildren<QLocalSocket *>();
    clients.removeIf(
        [](const QLocalSocket *each) { return each->state() != QLocalSocket::ConnectedState; });
    if (clients.size() > maxClients) {
        clients.first()->abort();
    }
}

// A start's message is escaped, so it begins with no brace.
void SingleInstance::hear(Conversation *conversation)
{
    const QByteArray line = conversation->line();
    if (line.startsWith('{')) {
        Q_EMIT asked(conversation);
        return;
    }
    conversation->answer(received.toByteArray());
    Q_EMIT started(QByteArray::fromPercentEncoding(line));
}

} // namespace ostrelle

#include "moc_SingleInstance.cpp"
