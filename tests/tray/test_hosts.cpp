#include "support/BusStandIn.h"
#include "support/PrivateSession.h"
#include "support/ScratchHome.h"
#include "tray/TrayHostWatcher.h"

#include <QDBusVariant>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString service = u"org.kde.StatusNotifierWatcher"_s;
const QString path = u"/StatusNotifierWatcher"_s;

QVariant answer(bool hasHost)
{
    return QVariant::fromValue(QDBusVariant(hasHost));
}

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
            BusStandIn list(service, path, answer(false)); // comes later
            for (const auto &what : {u"Registered"_s, u"Unregistered"_s, u"Registered"_s}) {
                const bool hasHost = what == "Registered"_L1;
                list.setAnswer(answer(hasHost));
                list.send(
                    QDBusMessage::createSignal(path, service, u"StatusNotifierHost"_s + what));
                QTRY_COMPARE(hosts.hostPresent(), hasHost);
            }
        }
        QTRY_VERIFY(!hosts.hostPresent());
        const BusStandIn again(service, path, answer(true));
        QTRY_VERIFY(hosts.hostPresent());
        session.endBus();
        QTRY_VERIFY(!hosts.hostPresent());
    }
};

QTEST_GUILESS_MAIN(TestHosts)
#include "test_hosts.moc"
