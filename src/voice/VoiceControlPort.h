#pragma once

#include "voice/VoiceStatus.h"

#include <QNetworkAccessManager>
#include <QQueue>

class QNetworkReply;

namespace ostrelle
{

// The voice agent's HTTP control port on the loopback interface. Requests go nowhere else: no
// proxy is asked and no redirect followed. Every request has a minute; what piles up at an agent
// that hangs is bounded. Main thread only.
class VoiceControlPort : public QObject
{
    Q_OBJECT

public:
    // A port number that no URL can have makes every call do nothing.
    explicit VoiceControlPort(qint64 port, QObject *parent = nullptr);

    // Asks how the agent is; dropped while four questions wait for their answer.
    void askStatus();

    // Sends a command: "start", "mute" or "unmute". Commands arrive in their order, one after the
    // other; how one ends is not told. While eight wait to be sent, further ones are dropped.
    void send(const QString &command);

Q_SIGNALS:
    // Once for each question, in the order of arrival; absent when the agent could not be reached
    // or made no sense.
    void statusArrived(const std::optional<ostrelle::VoiceStatus> &status);

private:
    void finishStatus(QNetworkReply *reply);
    void sendNext();
    QUrl url(const QString &word) const;
    void bound(QNetworkReply *reply);

    const QString m_controlURL; // without a trailing slash
    QNetworkAccessManager m_network;
    int m_questions = 0; // waiting for their answer
    QQueue<QString> m_commands;
    bool m_sending = false;
};

} // namespace ostrelle
