#pragma once

#include <QByteArray>
#include <QObject>
#include <QTimer>

class QLocalSocket;

namespace ostrelle
{

// One client at the running program's socket: it says one line, and is told one line. Whatever it
// does, or does not, it is gone after a while; the conversation ends with it. Main thread only.
class Conversation : public QObject
{
    Q_OBJECT

public:
    // The peer owns the conversation.
    explicit Conversation(QLocalSocket *peer);
    ~Conversation() override;

    // What the client has said, without the end of the line.
    const QByteArray &line() const { return m_line; }

    // Tells the client a line, and ends the conversation once that is taken. Only the first answer
    // counts.
    void answer(const QByteArray &line);

Q_SIGNALS:
    void heard();

private:
    void take();

    QLocalSocket *const m_peer;
    QTimer m_deadline;
    QByteArray m_line;
    bool m_hasHeard = false;
    bool m_hasAnswered = false;
};

} // namespace ostrelle
