#include "support/Exchange.h"

#include "support/Patience.h"

#include <QHostAddress>
#include <QTcpSocket>

QByteArray exchange(quint16 port, const QByteArray &request)
{
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, port);
    client.write(request);
    while (client.waitForReadyRead(patienceMilliseconds)) {
    }
    return client.readAll();
}
