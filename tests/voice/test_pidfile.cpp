#include "support/Rows.h"
#include "voice/AgentHome.h"
#include "voice/PidFile.h"

#include <QProcess>

#include <csignal>
#include <utime.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString pidFile = u".ostrelle/voice-agent.pid"_s;

class Sleeper : public QProcess
{
public:
    explicit Sleeper(const QString &first = u":"_s)
    {
        start(u"/bin/sh"_s, {u"-c"_s, first + u"; echo ready; exec sleep 60"_s});
        waitForReadyRead();
    }

    ~Sleeper() override
    {
        kill();
        waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Sleeper)

    // The first signal that it was sent and did not ignore, or our own: of those that wait, the
    // one with the lowest number comes first.
    int endedBy(int ourOwn)
    {
        ::kill(static_cast<pid_t>(processId()), ourOwn);
        return waitForFinished() && exitStatus() == CrashExit ? exitCode() : 0;
    }
};

} // namespace

class TestPidFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void content_data()
    {
        const Rows<QByteArray, bool> row("content", "kills");
        row("blanks and a line end around it", " \t%1 \r\n", true);
        row("a negative number", "-%1", false);
        row("zero", "0", false);
        row("beyond 32 bits", "4294967297", false);
        row("not UTF-8", "%1\xff", false);
        row("longer than any number", QByteArray(5000, ' ') + "%1", false);
    }

    void content()
    {
        QFETCH(QByteArray, content);
        QFETCH(const bool, kills);
        const AgentHome home;
        Sleeper sleeper;
        home.write(pidFile, content.replace("%1", QByteArray::number(sleeper.processId())));

        ServiceManager::killFromPidFile();

        QCOMPARE(processNamedBy("1"), 1); // whom nobody would end for a test
        QCOMPARE(home.exists(pidFile), !kills);
        QCOMPARE(sleeper.endedBy(SIGRTMIN), kills ? SIGTERM : SIGRTMIN);
    }

    void startedAfterTheFile_data()
    {
        const Rows<bool> row("isOurs");
        row("a stranger with the number of the agent", false);
        row("a child, but the clock was set", true);
    }

    void startedAfterTheFile()
    {
        QFETCH(const bool, isOurs);
        const AgentHome home;
        Sleeper child;
        QProcess shell; // whose child is none of ours; it ends like that
        shell.start(u"/bin/sh"_s, {u"-c"_s, u"sleep 60 & echo $!; wait $!"_s});
        QVERIFY(shell.waitForReadyRead());
        const auto grandchild = shell.readLine().trimmed().toInt();
        QVERIFY(grandchild > 0);
        const QString file = home.write(
            pidFile, QByteArray::number(isOurs ? child.processId() : qint64(grandchild)));
        const utimbuf aMinuteAgo{.actime = 0, .modtime = QDateTime::currentSecsSinceEpoch() - 60};
        QCOMPARE(::utime(qPrintable(file), &aMinuteAgo), 0);

        ServiceManager::killFromPidFile();

        QVERIFY(!home.exists(pidFile));
        QCOMPARE(child.endedBy(SIGRTMIN), isOurs ? SIGTERM : SIGRTMIN);
        ::kill(grandchild, SIGRTMIN);
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 128 + SIGRTMIN);
    }

    void ignoredTermination()
    {
        const AgentHome home;
        Sleeper patient(u"trap '' TERM"_s); // which has an hour
        home.write(pidFile, QByteArray::number(patient.processId()));
        killFromPidFile(ServiceManager::pidFile(), std::chrono::hours(1));
        // Whether the program goes on or exits at once.
        for (const bool exits : {false, true}) {
            Sleeper stubborn(u"trap '' TERM"_s);
            home.write(pidFile, QByteArray::number(stubborn.processId()));
            if (exits) {
                QProcess::execute(QCoreApplication::applicationFilePath(), {u"--kill"_s});
            } else {
                killFromPidFile(ServiceManager::pidFile(), std::chrono::milliseconds(10));
            }
            QVERIFY(stubborn.waitForFinished());
            QCOMPARE(stubborn.exitCode(), SIGKILL);
        }
        QCOMPARE(patient.endedBy(SIGRTMIN), SIGRTMIN);
    }
};

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    if (QCoreApplication::arguments().contains("--kill"_L1)) {
        ServiceManager::killFromPidFile();
        return 0;
    }
    TestPidFile test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_pidfile.moc"
