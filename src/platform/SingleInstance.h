#pragma once

#include <QByteArray>
#include <QLocalServer>
#include <QLockFile>
#include <QObject>

#include <memory>

namespace ostrelle
{

// One running program for each user and home directory. A second start hands what it was asked to
// open to the first. Main thread only.
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

private:
    bool becomeFirst();
    void receive();

    QString m_socket;
    std::unique_ptr<QLockFile> m_lock;
    QLocalServer m_server;
};

} // namespace ostrelle
