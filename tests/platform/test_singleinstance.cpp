#include "platform/InstancePlaces.h"
#include "platform/SingleInstance.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QLocalSocket>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <array>
#include <future>
#include <sys/stat.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestSingleInstance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void handsTheMessageToTheFirst_data()
    {
        const Rows<QByteArray, QString> row("message", "session");
        row("a plain second start", "", u".run"_s);
        row("long, and of several lines", QByteArray(20000, 'x') + "\ntwo\n", u".run"_s);
        row("from another session", "ostrelle://a%20b", u"other"_s);
    }

    void handsTheMessageToTheFirst()
    {
        QFETCH(QByteArray, message);
        QFETCH(QString, session);
        const ScratchHome home;
        QVERIFY(QFile(instanceSocket()).open(QFile::WriteOnly)); // of one that was killed
        SingleInstance first;
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        ::mkdir(qPrintable(home.path(session)), 0700);
        qputenv("XDG_RUNTIME_DIR", home.path(session).toUtf8());
        QSignalSpy started(&first, &SingleInstance::started);
        auto second =
            std::async(std::launch::async, [&] { return SingleInstance().claim(message); });
        QTRY_COMPARE(second.wait_for(0s), std::future_status::ready); // the answer is out too
        QCOMPARE(second.get(), SingleInstance::Role::HandedOver);
        QCOMPARE(started.value(0).value(0).toByteArray(), message);
    }

    void waitsForOneThatIsEnding()
    {
        const ScratchHome home;
        SingleInstance first;
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        QVERIFY(QFile::remove(instanceSocket())); // as at the end of the program
        QCOMPARE(SingleInstance().claim({}), SingleInstance::Role::Refused);
        QLocalServer hung;
        QVERIFY(hung.listen(instanceSocket()));
        auto second = std::async(std::launch::async, [] {
            SingleInstance instance;
            return instance.claim({});
        });
        for (int times = 0; times < 2; ++times) { // it asks again
            QVERIFY(hung.waitForNewConnection(5000));
            hung.nextPendingConnection()->abort();
        }
        hung.close();
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
        crowd.back().write(QByteArray(70'000, 'x') + '\n'); // is too long to be a start
        auto second = std::async(std::launch::async, [] { return SingleInstance().claim({}); });
        QSignalSpy started(&first, &SingleInstance::started);
        QTRY_COMPARE_WITH_TIMEOUT(second.wait_for(0s), std::future_status::ready, 1500);
        QCOMPARE(second.get(), SingleInstance::Role::HandedOver);
        QCOMPARE(std::ranges::count(crowd, QLocalSocket::ConnectedState, &QLocalSocket::state), 31);
        QTRY_COMPARE(std::ranges::count(crowd, QLocalSocket::ConnectedState, &QLocalSocket::state),
                     0);
        QCOMPARE(started.size(), 1);
        int told = 0; // one for each line that is heard, ten for the end
        connect(&first, &SingleInstance::asked, this, [&](Conversation *each) {
            connect(each, &QObject::destroyed, this, [&] { told += 10; });
            ++told;
        });
        crowd[0].connectToServer(instanceSocket());
        crowd[0].write("{\n");
        QTRY_COMPARE(told, 1);
        crowd[0].write("{\n"); // only the first line counts
        crowd[0].disconnectFromServer();
        QTRY_COMPARE(told, 11);
        first.release();
        QVERIFY(!QFile::exists(instanceSocket()));
    }
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "test_singleinstance.moc"
