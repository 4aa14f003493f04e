#include "platform/ChildProcess.h"
#include "platform/ProcessSetup.h"
#include "support/ScratchHome.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <thread>

using namespace ostrelle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

ChildCommand shell(const QString &script)
{
    return {.program = u"/bin/sh"_s, .arguments = {u"-c"_s, script}};
}

bool isAlive(pid_t pid)
{
    return ::kill(pid, 0) == 0;
}

} // namespace

class TestChildProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareProcess(); }

    void collectsOutput_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<Capture>("capture");
        QTest::addColumn<QByteArray>("output");
        QTest::newRow("standard output")
            << u"echo out; echo err >&2"_s << Capture::StandardOutput << QByteArray("out\n");
        QTest::newRow("standard error")
            << u"echo out; echo err >&2"_s << Capture::StandardError << QByteArray("err\n");
        QTest::newRow("merged") << u"echo out; echo err >&2"_s << Capture::Merged
                                << QByteArray("out\nerr\n");
        QTest::newRow("nothing") << u"echo out; echo err >&2"_s << Capture::Nothing << QByteArray();
        QTest::newRow("more than a pipe holds")
            << u"head -c 300000 /dev/zero"_s << Capture::StandardOutput << QByteArray(300000, '\0');
        QTest::newRow("reads standard input")
            << u"cat; echo end"_s << Capture::StandardOutput << QByteArray("end\n");
        QTest::newRow("grandchild holds the pipe")
            << u"sleep 60 & echo out"_s << Capture::StandardOutput << QByteArray("out\n");
        QTest::newRow("closes its output early")
            << u"echo out; exec >&-; sleep 0.1"_s << Capture::StandardOutput << QByteArray("out\n");
    }

    void collectsOutput()
    {
        QFETCH(QString, script);
        QFETCH(Capture, capture);
        QFETCH(QByteArray, output);
        // A grandchild that stays behind on purpose is ended by the deadline of its own sleep; the
        // process group makes it easy to end it here.
        const auto result =
            runChild(shell(u"echo $$ > \"$PIDS\"; "_s + script), withPidFile(capture));
        QVERIFY(result);
        QVERIFY(result->exitedNormally);
        QCOMPARE(result->output, output);
        ::kill(-pidFromFile(), SIGKILL);
    }

    void tellsHowTheChildEnded()
    {
        const auto seven = runChild(shell(u"exit 7"_s));
        QVERIFY(seven && seven->exitedNormally);
        QCOMPARE(seven->exitStatus, 7);
        const auto killed = runChild(shell(u"kill -9 $$"_s));
        QVERIFY(killed && !killed->exitedNormally);
        const auto missing = runChild({.program = u"/nonexistent/program"_s});
        QVERIFY(!missing);
        QCOMPARE(missing.error().kind, ChildFailure::Kind::NotStarted);
        QVERIFY(!missing.error().text.isEmpty());
    }

    void boundsAChild_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<ChildFailure::Kind>("kind");
        QTest::newRow("hangs") << u"trap '' TERM; sleep 60"_s << ChildFailure::Kind::TimedOut;
        QTest::newRow("hangs with its output closed")
            << u"exec >&-; sleep 60"_s << ChildFailure::Kind::TimedOut;
        QTest::newRow("floods") << u"exec cat /dev/zero"_s << ChildFailure::Kind::TooMuchOutput;
    }

    void boundsAChild()
    {
        QFETCH(QString, script);
        QFETCH(ChildFailure::Kind, kind);
        ChildOptions options;
        options.killAfter = kind == ChildFailure::Kind::TimedOut ? 200ms : 60s;
        options.maxOutputBytes = 1000000;
        const auto result = runChild(shell(script), options);
        QVERIFY(!result);
        QCOMPARE(result.error().kind, kind);
    }

    void givesTheChildWhatTheProgramWasStartedWith()
    {
        // This process ignores SIGPIPE and has a raised descriptor limit; its children must not.
        const auto pipe = runChild(shell(u"kill -PIPE $$; echo survived"_s));
        QVERIFY(pipe && !pipe->exitedNormally);
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        const auto descriptors = runChild(shell(u"ulimit -n; ulimit -Hn"_s));
        QVERIFY(descriptors);
        const auto values = descriptors->output.split('\n');
        QCOMPARE(values.at(1), QByteArray::number(static_cast<qulonglong>(limit.rlim_max)));
        if (values.at(0) != values.at(1)) {
            QCOMPARE(limit.rlim_cur, limit.rlim_max);
        }
    }

    // Last, because no child starts in this process afterwards.
    void endsEveryChildAtShutdown()
    {
        const ScratchHome home;
        const QString pidFile = home.path(u"pid"_s);
        std::thread waiting([&] {
            const auto result = runChild(
                shell(u"trap '' TERM; sleep 60 & echo $$ $! > "_s + pidFile + u"; wait"_s));
            QVERIFY(result && !result->exitedNormally);
        });
        QTRY_COMPARE(home.read(u"pid"_s).simplified().split(' ').size(), 2);
        endAllChildren();
        waiting.join();
        for (const QByteArray &pid : home.read(u"pid"_s).simplified().split(' ')) {
            QTRY_VERIFY(!isAlive(pid.toInt()));
        }
        QVERIFY(!runChild(shell(u"exit 0"_s)));
    }

private:
    ChildOptions withPidFile(Capture capture)
    {
        qputenv("PIDS", m_home.path(u"pids"_s).toUtf8());
        return {.capture = capture};
    }

    pid_t pidFromFile() const { return m_home.read(u"pids"_s).trimmed().toInt(); }

    ScratchHome m_home;
};

QTEST_GUILESS_MAIN(TestChildProcess)
#include "test_childprocess.moc"
