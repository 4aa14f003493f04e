#include "platform/Conversation.h"

#include <QLocalSocket>

#include <chrono>
#include <utility>

namespace ostrelle
{

using namespace std::chrono_literals;

namespace
{

constexpr qsizetype maxLineBytes = 65536;

constexpr auto patienceForLine = 2s;
// The gateway may take two minutes for a reply, and so may a user who is asked to unlock a keyring.
constexpr auto patienceForAnswer = 150s;
constexpr auto patienceForReader = 5s; // until it takes some more of the answer

} // namespace

Conversation::Conversation(QLocalSocket *peer)
    : QObject(peer)
    , m_peer(peer)
{
    m_peer->setReadBufferSize(maxLineBytes); // the end of an endless line never comes
    connect(&m_deadline, &QTimer::timeout, m_peer, &QLocalSocket::abort);
    connect(m_peer, &QLocalSocket::disconnected, m_peer, &QObject::deleteLater);
    connect(m_peer, &QLocalSocket::readyRead, this, &Conversation::take);
    connect(m_peer, &QLocalSocket::bytesWritten, this, [this] { m_deadline.start(); });
    m_deadline.start(patienceForLine);
    QMetaObject::invokeMethod(this, &Conversation::take, Qt::QueuedConnection);
}

// It may have held a password.
Conversation::~Conversation()
{
    m_line.fill('\0');
}

void Conversation::take()
{
    if (m_peer->canReadLine() && !std::exchange(m_hasHeard, true)) {
        m_line = m_peer->readLine().trimmed();
        m_deadline.start(patienceForAnswer);
        Q_EMIT heard();
    }
}

void Conversation::answer(const QByteArray &line)
{
    if (std::exchange(m_hasAnswered, true)) {
        return;
    }
    m_deadline.start(patienceForReader);
    m_peer->write(line + '\n');
    m_peer->disconnectFromServer();
}

} // namespace ostrelle

#include "moc_Conversation.cpp"
