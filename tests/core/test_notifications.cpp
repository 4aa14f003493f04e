#include "core/BackgroundWork.h"
#include "core/NotificationManager.h"
#include "support/PrivateSession.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestNotifications : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void escapesTheScript_data()
    {
        const Rows<QString, QString> row("body", "literal");
        row("ends in a backslash", u"C:\\"_s, u"C:\\\\"_s);
        row("backslash before a quote", u"\\\""_s, u"\\\\\\\""_s);
        row("line break", u"one\ntwo"_s, u"one\ntwo"_s);
    }

    void escapesTheScript()
    {
        QFETCH(QString, body);
        QFETCH(QString, literal);
        QCOMPARE(NotificationManager::script(u"OSTRELLE"_s, body),
                 u"display notification \"%1\" with title \"OSTRELLE\""_s.arg(literal));
    }

    void showsABannerOnTheDesktop()
    {
        const ScratchHome home;
        PrivateSession session;
        QProcess &daemon = session.startNotificationDaemon();
        NotificationManager::send(u"OSTRELLE"_s, u"5 < 6 & \"quoted\""_s);
        QByteArray shown;
        QTRY_VERIFY_WITH_TIMEOUT((shown += daemon.readAll()).contains("\n}"), 20000);
        QVERIFY2(shown.contains("summary: 'OSTRELLE'"), shown);
        QVERIFY2(shown.contains("5 < 6 & \"quoted\"") || shown.contains("5 &lt; 6 &amp;"), shown);
    }

    void doesNothingWithoutADesktop()
    {
        const ScratchHome home;
        NotificationManager::send(u"OSTRELLE"_s, u"nobody sees this"_s);
        QVERIFY(finishBackgroundWork(std::chrono::seconds(20)));
    }
};

QTEST_GUILESS_MAIN(TestNotifications)
#include "test_notifications.moc"
