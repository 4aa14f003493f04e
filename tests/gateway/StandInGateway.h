#pragma once

#include <QHash>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>

#include <optional>

// An HTTP server on this machine that answers as a test says, byte for byte.
class StandInGateway : public QTcpServer
{
public:
    // With a TLS configuration it speaks TLS.
    explicit StandInGateway(const QHostAddress &address = QHostAddress::LocalHost, quint16 port = 0,
                            std::optional<QSslConfiguration> tls = {});

    static QByteArray response(int status, const QByteArray &body = {},
                               const QByteArray &headers = {});
    // An answer that sends the client on to another server.
    static QByteArray redirectTo(const QString &url);

    QString url() const;

    // What is sent to each request for that path from now on; nothing: the request is left hanging.
    // Paths that nobody spoke of are answered with 404.
    void answer(const QByteArray &path, const QByteArray &response);

    // Answers the oldest of the requests that were left hanging.
    void answerHanging(const QByteArray &response) { m_hanging.takeFirst()->write(response); }

    // Sends the piece after each answer, over and over until the client hangs up.
    void flood(const QByteArray &piece) { m_flood = piece; }

    // The requests so far, head and body.
    QList<QByteArray> requests(const QByteArray &path) const;
    qsizetype requestCount() const { return m_requests.size(); }

    // The clients that have not hung up.
    qsizetype clientCount() const { return findChildren<QTcpSocket *>().size(); }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void accept();
    void receive(QTcpSocket *client);
    void keepFlooding(QTcpSocket *client);

    const std::optional<QSslConfiguration> m_tls;
    QHash<QByteArray, QByteArray> m_answers;
    QByteArray m_flood;
    QList<QByteArray> m_requests;
    QList<QTcpSocket *> m_hanging; // whose client still waits
};
