#include "support/PrivateSession.h"
#include "support/ScratchHome.h"
#include "tray/TrayHostWatcher.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString watcher = u"org.kde.StatusNotifierWatcher"_s;

// Who is asked for tray hosts, on the bus while the object lives; at first there is none.
class HostList : public QDBusVirtualObject
{
public:
    HostList()
    {
        m_bus.registerVirtualObject(u"/StatusNotifierWatcher"_s, this);
        m_bus.registerService(watcher);
    }
    ~HostList() override { QDBusConnection::disconnectFromBus(m_bus.name()); }

    void tell(bool hasHost)
    {
        m_hasHost = hasHost;
        const QString what = hasHost ? u"Registered"_s : u"Unregistered"_s;
        m_bus.send(QDBusMessage::createSignal(u"/StatusNotifierWatcher"_s, watcher,
                                              u"StatusNotifierHost"_s + what));
    }

    QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection & /*bus*/) override
    {
        return m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(m_hasHost))));
    }

private:
    bool m_hasHost = false;
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"hosts"_s);
};

} // namespace

class TestHosts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheHostsOnTheBus()
    {
        const ScratchHome home;
        PrivateSession session;
        const TrayHostWatcher hosts;
        {
            HostList list; // comes later
            for (const bool hasHost : {true, false, true}) {
                list.tell(hasHost);
                QTRY_COMPARE(hosts.hostPresent(), hasHost);
            }
        }
        QTRY_VERIFY(!hosts.hostPresent());
        HostList again;
        again.tell(true);
        QTRY_VERIFY(hosts.hostPresent());
        session.endBus();
        QTRY_VERIFY(!hosts.hostPresent());
    }
};

QTEST_GUILESS_MAIN(TestHosts)
#include "test_hosts.moc"
