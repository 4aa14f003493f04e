#pragma once

#include "platform/Conversation.h"
#include "platform/Files.h"

#include <QLocalServer>
#include <QObject>

namespace ostrelle
{

// One running program for each user and home directory, whatever session it is started in. A second
// start hands what it was asked to open to the first; ostrellectl asks it through the same socket.
// Main thread only.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    enum class Role {
        First,      // this process is the program now
        HandedOver, // another one runs and has taken the message
        Refused,    // another one runs but does not answer
    };

    explicit SingleInstance(QObject *parent = nullptr);
    ~SingleInstance() override;

    // Waits at most a few seconds for an answer of the first instance, which may be just starting
    // or ending. `message` may be empty: a plain second start.
    Role claim(const QByteArray &message);

    // Gives up the role, so that the next start is the first.
    void release();

Q_SIGNALS:
    // A later start of the program, with its message.
    void started(const QByteArray &message);

    // Somebody has asked what is no start: its line begins with "{". Whoever hears of it answers.
    void asked(ostrelle::Conversation *conversation);

private:
    bool becomeFirst();
    void receive();
    void makeRoom();
    void hear(Conversation *conversation);

    const QString m_lockFile; // holds the socket's path
    Descriptor m_lock;        // valid in the first instance
    QLocalServer m_server;
};

} // namespace ostrelle
