#pragma once

#include "GatewayFiles.h"
#include "ServiceModes.h"

#include <QHostAddress>
#include <QObject>
#include <QTcpServer>
#include <QTimer>

namespace ostrelle::simulator
{

struct ServiceOptions {
    QHostAddress bind;
    quint16 port; // 0: a free one
};

// The gateway's HTTP service. While it runs it also shows what the clock brings: the session log
// grows, and the project tracker follows its job.
class Service : public QObject
{
    Q_OBJECT

public:
    explicit Service(ServiceOptions options, QObject *parent = nullptr);

    // Starts to serve. The line on standard output names the port.
    Done start();

private:
    void accept();
    Delivery serve(const Request &request) const;
    void tick();

    ServiceOptions m_options;
    QTcpServer m_server;
    QTimer m_clock;
    qint64 m_lastTickMs = 0;
};

} // namespace ostrelle::simulator
