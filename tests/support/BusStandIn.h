#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <utility>

// A service on the session bus, with one answer to every question; there while the object lives.
class BusStandIn : public QDBusVirtualObject
{
public:
    BusStandIn(const QString &service, const QString &path, QVariant answer)
        : m_answer(std::move(answer))
    {
        m_bus.registerVirtualObject(path, this, QDBusConnection::SubPath);
        m_bus.registerService(service);
    }
    ~BusStandIn() override { QDBusConnection::disconnectFromBus(m_bus.name()); }

    bool wasAsked() const { return m_wasAsked; }
    void setAnswer(const QVariant &answer) { m_answer = answer; }
    void send(const QDBusMessage &signal) const { m_bus.send(signal); }

    QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection & /*bus*/) override
    {
        m_wasAsked = true;
        return m_bus.send(message.createReply(m_answer));
    }

private:
    QVariant m_answer;
    bool m_wasAsked = false;
    QDBusConnection m_bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("stand-in"));
};
