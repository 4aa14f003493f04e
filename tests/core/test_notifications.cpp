#include "core/DesktopOpen.h"
#include "core/NotificationManager.h"
#include "core/OneLine.h"
#include "platform/Terminal.h"
#include "support/Patience.h"
#include "support/PrivateSession.h"
#include "support/ScratchHome.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestNotifications : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void escapesTheScript()
    {
        // A quote behind a backslash, a line break, and a backslash at the end.
        QCOMPARE(NotificationManager::script(u"OSTRELLE"_s, u"\\\"one\ntwo\\"_s),
                 u"display notification \"\\\\\\\"one\ntwo\\\\\" with title \"OSTRELLE\""_s);
    }

    void showsABannerOnTheDesktop()
    {
        const ScratchHome home;
        PrivateSession session;
        QProcess &daemon = session.startNotificationDaemon();
        const QString bus = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS").section(u'=', 1);
        QVERIFY(QFile::link(bus.section(u',', 0, 0), home.path(u".run/bus"_s)));
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        NotificationManager::send(u"OSTRELLE"_s, u"5 < 6 & \"quoted\""_s);
        QByteArray shown;
        QTRY_VERIFY_WITH_TIMEOUT((shown += daemon.readAll()).contains("\n}"), patienceMilliseconds);
        QVERIFY2(shown.contains("summary: 'OSTRELLE'"), shown);
        QVERIFY2(shown.contains("5 < 6 & \"quoted\"") || shown.contains("5 &lt; 6 &amp;"), shown);

        qputenv("PATH", home.path(u"bin"_s).toLocal8Bit()); // no xdg-open there
        openWithDesktop(u"/tmp/a.log"_s);
        QTRY_VERIFY_WITH_TIMEOUT(
            (shown += daemon.readAll()).contains("body: 'Nothing here can open /tmp/a.log: "),
            patienceMilliseconds);
        QVERIFY(!openInTerminal(u"/tmp/a.sh"_s)); // nor a terminal
    }

    void cutsOnlyWhatIsLonger() { QCOMPARE(oneLine(QString(100, u'x')), QString(100, u'x')); }
};

QTEST_GUILESS_MAIN(TestNotifications)
#include "test_notifications.moc"
