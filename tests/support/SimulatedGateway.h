#pragma once

#include "support/ScratchHome.h"

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>

// The gateway simulator's service on a free port, at home in a scratch home, for as long as the
// object lives.
class SimulatedGateway
{
public:
    explicit SimulatedGateway(const ScratchHome &home);
    ~SimulatedGateway();
    SimulatedGateway(const SimulatedGateway &) = delete;
    SimulatedGateway &operator=(const SimulatedGateway &) = delete;

    quint16 port() const { return m_port; }
    QString url() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_port); }
    QByteArray token() const;

    // Whether somebody has asked for that path since settings had "record" on.
    bool wasAsked(const QString &target) const;

private:
    const ScratchHome &m_home;
    QProcess m_process;
    quint16 m_port = 0;
};

// What the simulator in this home is from now on: the members that its README names.
void playSimulator(const ScratchHome &home, const QJsonObject &settings);
