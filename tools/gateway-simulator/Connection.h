#pragma once

#include "ServiceModes.h"

#include <QObject>
#include <QTimer>

#include <functional>

class QTcpSocket;

namespace ostrelle::simulator
{

// One client: reads its request, sends what it gets and closes. Ends by itself when the client has
// gone or a deadline has passed.
class Connection : public QObject
{
    Q_OBJECT

public:
    using Answer = std::function<Delivery(const Request &)>;
    Connection(QTcpSocket *socket, Answer answer, QObject *parent);

private:
    void receive();
    void begin(Delivery delivery);
    void send();
    void sendNextByte();

    QTcpSocket *m_socket;
    Answer m_answer; // empty once the request is there
    QByteArray m_received;
    Delivery m_delivery; // what is still to be sent
    QTimer m_deadline;
    QTimer m_pace;
};

} // namespace ostrelle::simulator
