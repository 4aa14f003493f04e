#include "platform/InstancePlaces.h"
#include "platform/SingleInstance.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QDir>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <array>
#include <future>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestSingleInstance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void handsTheMessageToTheFirst_data()
    {
        const Rows<QByteArray, QString> row("message", "session");
        row("a plain second start", "", u".run"_s);
        row("several lines", "one\ntwo\n", u".run"_s);
        row("long", QByteArray(20000, 'x'), u".run"_s);
        row("from another session", "ostrelle://a%20b", u"other"_s);
    }

    void handsTheMessageToTheFirst()
    {
        QFETCH(QByteArray, message);
        QFETCH(QString, session);
        const ScratchHome home;
        SingleInstance first;
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        ::mkdir(qPrintable(home.path(session)), 0700);
        qputenv("XDG_RUNTIME_DIR", home.path(session).toUtf8());
        QSignalSpy started(&first, &SingleInstance::started);
        auto second =
            std::async(std::launch::async, [&] { return SingleInstance().claim(message); });
        QTRY_COMPARE(started.size(), 1);
        QCOMPARE(started.first().first().toByteArray(), message);
        QCOMPARE(second.get(), SingleInstance::Role::HandedOver);
    }

    void isFirstAgainAfterACrash()
    {
        const ScratchHome home;
        const pid_t crashing = ::fork();
        if (crashing == 0) {
            SingleInstance first;
            ::_exit(first.claim({}) == SingleInstance::Role::First ? 0 : 1);
        }
        int status = 0;
        QCOMPARE(::waitpid(crashing, &status, 0), crashing);
        QCOMPARE(status, 0);
        QVERIFY(!QDir(home.path(u".run"_s)).isEmpty(QDir::Files | QDir::System));
        SingleInstance next;
        QCOMPARE(next.claim({}), SingleInstance::Role::First);
    }

    void waitsForOneThatIsEnding()
    {
        const ScratchHome home;
        SingleInstance first;
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        // Nobody answers: the first is past its event loop, as at the end of the program.
        auto second = std::async(std::launch::async, [] {
            SingleInstance instance;
            return instance.claim({});
        });
        first.release();
        QCOMPARE(second.get(), SingleInstance::Role::First);
    }

    void takesInAStartBesideACrowd()
    {
        const ScratchHome home;
        SingleInstance first;
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        std::array<QLocalSocket, 100> crowd;
        for (QLocalSocket &each : crowd) {
            each.connectToServer(instanceSocket());
            QVERIFY(each.waitForConnected());
            QTest::qWait(0);
        }
        auto second = std::async(std::launch::async, [] { return SingleInstance().claim({}); });
        QSignalSpy started(&first, &SingleInstance::started);
        QTRY_COMPARE_WITH_TIMEOUT(started.size(), 1, 1500);
        QCOMPARE(second.get(), SingleInstance::Role::HandedOver);
        QCOMPARE(std::ranges::count(crowd, QLocalSocket::ConnectedState, &QLocalSocket::state), 31);
    }

    void survivesARudePeer()
    {
        const ScratchHome home;
        SingleInstance first;
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        QSignalSpy started(&first, &SingleInstance::started);
        QLocalSocket rude;
        rude.connectToServer(instanceSocket());
        QVERIFY(rude.waitForConnected());
        rude.write(QByteArray(200000, 'x')); // no end of line
        QTRY_COMPARE_WITH_TIMEOUT(rude.state(), QLocalSocket::UnconnectedState, 10000);
        QCOMPARE(started.size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "test_singleinstance.moc"
