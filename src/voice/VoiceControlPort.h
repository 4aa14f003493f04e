#pragma once

#include "core/HttpClient.h"
#include "voice/VoiceStatus.h"

#include <QQueue>
#include <QTimer>

namespace ostrelle
{

// The voice agent's HTTP control port on the loopback interface. Every request has a minute; what
// piles up at an agent that hangs is bounded. Main thread only.
class VoiceControlPort : public QObject
{
    Q_OBJECT

public:
    // With a port number that no URL can have nothing is sent, and nobody answers. An action of the
    // microphone waits until the one before it was answered, but not longer than `longestTurn`:
    // sent at once, the two could arrive in the wrong order.
    explicit VoiceControlPort(qint64 port,
                              std::chrono::milliseconds longestTurn = std::chrono::seconds(1),
                              QObject *parent = nullptr);

    // Asks how the agent is; dropped while forty questions wait for their answer, which is more
    // than are asked until the oldest is given up: lost questions keep nobody from asking.
    void askStatus();

    // Sends "start" at once, and "mute" or "unmute" when it is their turn. How it ends is not
    // reported. Dropped while eight wait for their turn or sixteen for their answer.
    void postAction(const QString &action);

    // Forgets what still waits for its turn.
    void dropWaitingActions() { m_waiting.clear(); }

Q_SIGNALS:
    // Once for each question, in the order of arrival; absent when the agent could not be reached
    // or made no sense.
    void statusArrived(const std::optional<ostrelle::VoiceStatus> &status);

private:
    void finishStatus(const HttpResult &result);
    void post(const QString &action, const std::function<void()> &answered);
    void takeTurn();

    const QString m_controlURL; // without a trailing slash
    HttpClient m_client;
    int m_questions = 0;       // waiting for their answer
    int m_posts = 0;           // likewise
    QQueue<QString> m_waiting; // switches of the microphone
    int m_turn = 0;            // the number of the newest one that was sent
    QTimer m_turnTimer;        // runs while that one has its turn
};

} // namespace ostrelle
