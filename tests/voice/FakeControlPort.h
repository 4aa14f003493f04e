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

    QByteArray body = "{}"; // of every status answer; null: questions wait
    int questions = 0;      // status requests so far
    QStringList commands;
    int mostCommandsAtOnce = 0;
    QList<QTcpSocket *> waiting;

private:
    void serve(QTcpSocket *socket)
    {
        const QByteArray request = socket->readAll();
        if (request.startsWith("POST ")) {
            commands += QString::fromUtf8(request.split(' ')[1]);
            mostCommandsAtOnce = std::max(mostCommandsAtOnce, ++m_commandsAtOnce);
            QTimer::singleShot(5, socket, [this, socket] {
                --m_commandsAtOnce;
                answer(socket, "{}");
            });
            return;
        }
        ++questions;
        if (body.isNull()) {
            waiting += socket;
        } else {
            answer(socket, body);
        }
    }

    // The status is one that nobody shall look at.
    static void answer(QTcpSocket *socket, const QByteArray &content)
    {
        socket->write("HTTP/1.1 500 No\r\nConnection: close\r\n\r\n" + content);
        socket->disconnectFromHost();
    }

    int m_commandsAtOnce = 0;
};
