#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "platform/ProcessSetup.h"
#include "support/Processes.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QTest>

#include <csignal>
#include <ctime>
#include <fcntl.h>
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

constexpr rlim_t startedWith = 512; // descriptors, and bytes of a core

} // namespace

class TestChildProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (const auto resource : {RLIMIT_NOFILE, RLIMIT_CORE}) {
            rlimit limit{};
            ::getrlimit(resource, &limit);
            limit.rlim_cur = startedWith;
            ::setrlimit(resource, &limit);
        }
        ::umask(027);
        prepareProcess();
    }

    void collectsOutput_data()
    {
        const Rows<QString, Capture, QByteArray> row("script", "capture", "output");
        row("standard error", u"seq 99999; echo err >&2"_s, Capture::StandardError, "err\n");
        row("merged", u"echo out; echo err >&2"_s, Capture::Merged, "out\nerr\n");
        row("asks for input", u"cat; seq 99999 >&2; echo out"_s, Capture::StandardOutput, "out\n");
        row("nothing", u"echo out; echo err >&2"_s, Capture::Nothing, {});
        row("more than a pipe holds", u"head -c 300000 /dev/zero"_s, Capture::StandardOutput,
            QByteArray(300000, '\0'));
        row("closes its output early", u"echo out; exec >&-; sleep 0.2"_s, Capture::StandardOutput,
            "out\n");
    }

    void collectsOutput()
    {
        QFETCH(QString, script);
        QFETCH(Capture, capture);
        const std::clock_t before = std::clock();
        const auto result = runChild(shell(script), {.capture = capture, .maxOutputBytes = 300000});
        QVERIFY2(std::clock() - before < CLOCKS_PER_SEC / 10, "it did not wait");
        QVERIFY(result);
        QVERIFY(result->exitedNormally);
        QTEST(result->output, "output");
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
        QVERIFY(!runChild(shell(u"cat"_s), {.input = QByteArray(1000000, 'x')}));
    }

    void boundsAChild_data()
    {
        const Rows<QString, ChildFailure::Kind> row("script", "kind");
        row("hangs", u"wait"_s, ChildFailure::Kind::TimedOut);
        row("hangs with its output closed", u"exec >&-; wait"_s, ChildFailure::Kind::TimedOut);
        row("floods", u"exec cat /dev/zero"_s, ChildFailure::Kind::TooMuchOutput);
        row("is unwanted", u"wait"_s, ChildFailure::Kind::Stopped);
    }

    void boundsAChild()
    {
        QFETCH(QString, script);
        QFETCH(ChildFailure::Kind, kind);
        ChildOptions options;
        options.killAfter = kind == ChildFailure::Kind::TimedOut ? 200ms : 60s;
        options.maxOutputBytes = 1000000;
        std::stop_source stop;
        options.stop = stop.get_token();
        const std::jthread other([&] {
            if (kind == ChildFailure::Kind::Stopped) {
                stop.request_stop();
            }
        });
        const ScratchHome home; // of the script
        const auto result =
            runChild(shell(u"trap '' TERM; sleep 60 & echo $! >~/left; "_s + script), options);
        QVERIFY(!result);
        QCOMPARE(result.error().kind, kind);
        QTRY_VERIFY(!isAlive(home.read(u"left"_s).trimmed().toInt()));
    }

    void givesTheChildWhatTheProgramWasStartedWith()
    {
        // This process ignores and blocks SIGPIPE and has a raised descriptor limit; its children
        // must not.
        sigset_t blocked{};
        ::sigaddset(&blocked, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
        const auto pipe = runChild(shell(u"kill -PIPE $$; echo survived"_s));
        QVERIFY(pipe && !pipe->exitedNormally);
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        QCOMPARE(limit.rlim_cur, limit.rlim_max);
        const Descriptor ours(::open("/dev/null", O_RDONLY)); // not closed by an exec
        const auto rest = runChild(shell(u"ulimit -n; ulimit -c; umask; test -e /proc/$$/fd/%1 &&"
                                         " echo inherited"_s.arg(ours.get())));
        QVERIFY(rest);
        QCOMPARE(rest->output.simplified(),
                 QByteArray::number(qulonglong{startedWith}) + " 1 0027");
    }

    void killsWhatHoldsTheOutput_data()
    {
        const Rows<QString, bool, bool> row("script", "killLeftovers", "lives");
        row("holds it", u"sleep 600 & echo $!"_s, true, false);
        row("holds it, which is nobody's concern", u"sleep 60 & echo $!"_s, false, true);
        row("holds it in a session of its own",
            u"setsid -f sh -c 'echo $$; : >~/told; exec sleep 600';"
            " until test -e ~/told; do sleep 0.01; done"_s,
            true, false);
        row("a service", u"sleep 60 >/dev/null & echo $!"_s, true, true);
    }

    void killsWhatHoldsTheOutput()
    {
        QFETCH(QString, script);
        QFETCH(bool, killLeftovers);
        QFETCH(bool, lives);
        const ScratchHome home; // of the script
        const auto result = runChild(shell(script), {.killLeftovers = killLeftovers});
        QVERIFY(result);
        const pid_t grandchild = result->output.trimmed().toInt();
        QVERIFY(grandchild > 0);
        QTRY_COMPARE(isAlive(grandchild), lives);
        ::kill(grandchild, lives ? SIGKILL : 0);
    }

    // Last, because no child starts in this process afterwards.
    void endsEveryChildAtShutdown()
    {
        const ScratchHome home;
        const QString pidFile = home.path(u"pid"_s);
        std::thread waiting([&] {
            const auto result = runChild(
                shell(u"trap '' TERM; sleep 60 & echo $$ $! > "_s + pidFile + u"; wait"_s));
            QVERIFY(!result && result.error().kind == ChildFailure::Kind::ProgramEnds);
        });
        QTRY_COMPARE(home.read(u"pid"_s).simplified().split(' ').size(), 2);
        endAllChildren();
        waiting.join();
        for (const QByteArray &pid : home.read(u"pid"_s).simplified().split(' ')) {
            QTRY_VERIFY(!isAlive(pid.toInt()));
        }
        QVERIFY(!runChild(shell(u"exit 0"_s)));
    }
};

QTEST_GUILESS_MAIN(TestChildProcess)
#include "test_childprocess.moc"
