#pragma once

#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

// The control port of a voice agent that says what the test wants.
class FakeControlPort : public QTcpServer
{
public:
    FakeControlPort()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(socket); });
        });
    }

    void answerOldest(const QByteArray &content) { answer(waiting.takeFirst(), content); }

    QByteArray status = "500 No"; // of every answer; one that nobody shall look at
    QByteArray body = "{}";       // of every status answer; null: questions wait
    bool answersCommands = true;
    int questions = 0; // status requests so far
    QStringList commands;
    int mostSwitchesAtOnce = 0; // of the microphone
    QList<QTcpSocket *> waiting;

private:
    void serve(QTcpSocket *socket)
    {
        const QByteArray request = socket->readAll();
        if (request.startsWith("POST ")) {
            take(socket, QString::fromUtf8(request.split(' ')[1]));
            return;
        }
        ++questions;
        if (body.isNull()) {
            waiting += socket;
        } else {
            answer(socket, body);
        }
    }

    void take(QTcpSocket *socket, const QString &command)
    {
        commands += command;
        const int weight = command == QStringLiteral("/start") ? 0 : 1;
        m_switchesAtOnce += weight;
        mostSwitchesAtOnce = std::max(mostSwitchesAtOnce, m_switchesAtOnce);
        if (answersCommands) {
            QTimer::singleShot(5, socket, [this, socket, weight] {
                m_switchesAtOnce -= weight;
                answer(socket, "{}");
            });
        }
    }

    void answer(QTcpSocket *socket, const QByteArray &content) const
    {
        socket->write("HTTP/1.1 " + status + "\r\nConnection: close\r\n\r\n" + content);
        socket->disconnectFromHost();
    }

    int m_switchesAtOnce = 0;
};
