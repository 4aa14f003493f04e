#include "core/BackgroundWork.h"
#include "settings/SettingsQueues.h"
#include "support/DemoVoiceAgent.h"
#include "support/Patience.h"
#include "support/Rows.h"
#include "voice/AgentHome.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QString python = u".ostrelle/venv/bin/python"_s;
const QString pidFile = u".ostrelle/voice-agent.pid"_s;

// Makes the log something else, perhaps with the victim's help; 0 when it is done.
using Prepare = int (*)(const char *victim, const char *log);

// The agent's process, 0 for none, once it was looked for: it has been launched, or will not be.
qint64 launchedBy(const ServiceManager &manager)
{
    userInitiatedPool().waitForDone();
    QCoreApplication::processEvents();
    return manager.voiceProcessId();
}

} // namespace

class TestSupervisor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsAgent()
    {
        const AgentHome home;
        OstrelleConfig config = OstrelleConfig::defaults();
        config.ports.voiceAgent = installDemoVoiceAgent(home);
        config.save();
        const QString log = home.write(u"agent.log"_s, "of an earlier run\n");
        QVERIFY(QFile::setPermissions(log, QFile::Permissions(0x6644)));
        ManualTime time; // no restart after a crash
        ServiceManager manager = home.supervisor(time.asTime());
        const QSignalSpy changes(&manager, &ServiceManager::voiceRunningChanged);
        const PrintedLines printed;

        manager.startVoice();
        manager.stopVoice();
        QCOMPARE(launchedBy(manager), 0);
        manager.startVoice();
        manager.startVoice(); // while the agent is looked for
        QTRY_VERIFY(manager.voiceRunning());
        const auto pid = static_cast<pid_t>(manager.voiceProcessId());
        QTRY_COMPARE(home.read(pidFile), QByteArray::number(pid));
        QCOMPARE(printed.text(),
                 "[ServiceManager] Voice agent started (PID " + QByteArray::number(pid) + ")\n");
        QTRY_VERIFY(home.read(u"agent.log"_s).startsWith("of an earlier run\ndemo voice agent"));
        QCOMPARE(QFile::permissions(log), QFile::Permissions(0x6600));

        manager.setUserStoppedVoice(true);
        manager.startVoice();
        QCOMPARE(manager.voiceProcessId(), pid);
        QVERIFY(!manager.userStoppedVoice());

        manager.stopVoice();
        QVERIFY(manager.voiceRunning()); // until it has ended
        manager.startVoice();            // remembered until then
        QTRY_COMPARE(changes.size(), 3);
        QVERIFY(!isAlive(pid) && manager.voiceProcessId() != 0);
        manager.startVoice(); // it runs: there is nothing to remember
        ::kill(static_cast<pid_t>(manager.voiceProcessId()), SIGKILL);
        QTRY_COMPARE(changes.size(), 4);
        QVERIFY(home.exists(pidFile) && launchedBy(manager) == 0);
    }

    void command_data()
    {
        const Rows<QString, bool> row("venvPath", "bundled");
        row("relative", u".ostrelle/venv"_s, false);
        row("a slash at its end", u"~/.ostrelle/venv/"_s, false);
        row("script in the bundle", u"~/.ostrelle/venv"_s, true);
    }

    void command()
    {
        QFETCH(const QString, venvPath);
        QFETCH(const bool, bundled);
        const AgentHome home;
        QDir::setCurrent(home.path());
        home.installScript("(pwd; cat; echo $@; tr '\\0' '\\n' </proc/$$/environ | sort) >~/told");
        home.write(u"bundle/voice-agent/voice_agent.py"_s, "");
        OstrelleConfig config = home.config();
        config.voice.venvPath = venvPath;
        SupervisorSurroundings surroundings = home.surroundings();
        surroundings.resources = home.path(bundled ? u"bundle"_s : u"no bundle"_s);
        ServiceManager manager(config, home.settings().preferences, surroundings);

        const PrintedLines printed;
        manager.startVoice();
        QTRY_COMPARE(launchedBy(manager), 0);
        QDir::setCurrent(u"/"_s);
        QVERIFY(!printed.text().contains("crashed")); // status 0 is a quiet end

        const QString folder = home.path(bundled ? u"bundle/voice-agent"_s : u".ostrelle"_s);
        QCOMPARE(QString::fromUtf8(home.read(u"told"_s)).replace(u"//"_s, u"/"_s),
                 u"%1\n%1/voice_agent.py\nHOME=%2\nOSTRELLE_DATA=%2/.ostrelle/data\n"
                 "PATH=%2/.ostrelle/venv/bin:/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin\n"
                 "PYTHONUNBUFFERED=1\n"_s.arg(folder, home.path()));
    }

    void cannotStart_data()
    {
        const Rows<QString, bool, QByteArray> row("broken", "removed", "message");
        row("no environment", python, true, "Python venv not found at ");
        row("no script", u".ostrelle/voice_agent.py"_s, true, "Voice script not found at ");
        row("no program", python, false, "Failed to start voice: ");
    }

    void cannotStart()
    {
        QFETCH(const QString, broken);
        QFETCH(const bool, removed);
        QFETCH(const QByteArray, message);
        const AgentHome home;
        home.installScript("exit 0");
        QFile file(home.path(broken));
        QVERIFY(removed ? file.remove() : file.setPermissions(QFile::ReadOwner));
        ManualTime time;
        ServiceManager manager = home.supervisor(time.asTime());
        const PrintedLines printed;

        manager.startVoice();

        const QByteArray begin = "[ServiceManager] " + message;
        QTRY_VERIFY(printed.text().startsWith(begin));
        QVERIFY(!removed || printed.text() == begin + home.path(broken).toUtf8() + '\n');
        QCOMPARE(printed.text(), "[ServiceManager] " + manager.startProblem().toUtf8() + '\n');
        QVERIFY(!manager.voiceRunning() && time.scheduled.isEmpty());
        home.installScript("exit 0"); // now it is there
        manager.startVoice();
        QCOMPARE(manager.startProblem(), QString());
        QTRY_COMPARE(launchedBy(manager), 0);
        QCOMPARE(printed.text().count("agent started"), 1);
    }

    void startAll()
    {
        const PrintedLines silence;
        for (const auto &[enabled, preferences, starts] :
             {std::tuple(true, "", false), std::tuple(false, "autoStartVoice=true", false),
              std::tuple(true, "autoStartVoice=true", true)}) {
            const AgentHome home;
            home.installScript("exec sleep 60");
            home.write(u".config/ai.duskrell.ostrelle.conf"_s,
                       QByteArray("[General]\n") + preferences);
            ServiceManager manager = home.supervisor();
            manager.setVoiceEnabled(enabled);
            settingsQueue().waitForDone();
            QCOMPARE(home.settings().preferences->value(preference::voiceEnabled), enabled);
            manager.startAll();
            QCOMPARE(launchedBy(manager) != 0, starts);
        }
    }

    void crashSeries()
    {
        struct Crash {
            std::chrono::seconds afterTheLast;
            int delay;
            int attempt;
        };
        const AgentHome home;
        home.installScript("exit 3");
        ManualTime time;
        ServiceManager manager = home.supervisor(time.asTime());
        qsizetype descriptors = 0;
        time.now = SupervisorTime::real().now();
        QVERIFY(time.now.time_since_epoch() > 0s);
        manager.startVoice();
        for (const auto &[gap, delay, attempt] :
             {Crash{0s, 1, 1}, Crash{10s, 2, 2}, Crash{60s, 4, 3}, Crash{1s, 8, 4},
              Crash{1s, 16, 5}, Crash{1s, 30, 6}, Crash{1s, 30, 7}, Crash{61s, 1, 1},
              Crash{1s, 2, 2}}) {
            const PrintedLines printed;
            time.now += gap;
            QVERIFY(time.waitForScheduled());
            QVERIFY(printed.text().endsWith("\n[ServiceManager] Voice crashed, restarting in " +
                                            QByteArray::number(delay) + ".0s (attempt " +
                                            QByteArray::number(attempt) + ")\n"));
            QCOMPARE(time.scheduled[0].first, std::chrono::seconds(delay));
            QVERIFY(!manager.voiceRunning());

            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(manager.findChildren<QProcess *>().isEmpty());
            // A thread of a pool may have made its own meanwhile.
            QTRY_VERIFY(descriptors == 0 || openDescriptors() <= descriptors + 2);
            descriptors = attempt == 2 ? openDescriptors() : descriptors;

            time.runNext();
        }
        QVERIFY(time.waitForScheduled());
        QTRY_COMPARE(::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT), -1); // no child
        manager.setVoiceEnabled(false);
        time.runNext();
        QCOMPARE(launchedBy(manager), 0);
    }

    void endsWhatTheAgentStarted_data()
    {
        // end: of the agent
        const Rows<QByteArray> row("end");
        row("stopped", "trap 'exit 0' TERM; touch ~/ready; wait");
        row("stopped in a group of its own",
            "exec /usr/bin/python3 -c 'import os, pathlib, time; os.setpgid(0, 0);"
            "pathlib.Path.home().joinpath(\"ready\").touch(); time.sleep(60)'");
        row("crashed", "touch ~/ready; exit 3");
    }

    // A recorder that is polite, and one that ends only when it must.
    void endsWhatTheAgentStarted()
    {
        QFETCH(const QByteArray, end);
        const AgentHome home;
        home.installScript("sleep 60 & echo $! >~/polite;"
                           "(trap '' TERM; while :; do sleep 1; done) & echo $! >~/stubborn;" +
                           end);
        ManualTime time;
        ServiceManager manager = home.supervisor(time.asTime());
        const PrintedLines silence;
        manager.startVoice();
        QTRY_VERIFY(home.exists(u"ready"_s));
        manager.stopVoice();
        for (const QString &recorder : {u"polite"_s, u"stubborn"_s}) {
            QTRY_VERIFY_WITH_TIMEOUT(!isAlive(home.read(recorder).trimmed().toInt()),
                                     patienceMilliseconds);
        }
    }

    void ignoresTermination()
    {
        const AgentHome home;
        home.installScript("trap '' TERM; touch ~/ready; sleep 60 & wait; wait");
        ManualTime time;
        ServiceManager manager = home.supervisor(time.asTime());
        const PrintedLines printed;
        manager.startVoice();
        QVERIFY(QTest::qWaitFor([&] { return home.exists(u"ready"_s); }));
        const auto pid = static_cast<pid_t>(manager.voiceProcessId());

        manager.stopVoice();
        QCOMPARE(time.scheduled.size(), 1);
        QCOMPARE(time.scheduled[0].first, 3s);
        QVERIFY(isAlive(pid));
        time.runNext();
        QVERIFY(!manager.voiceRunning());

        QVERIFY(time.waitForScheduled()); // a crash like any other, but for the restart
        QVERIFY(!isAlive(pid));
        QCOMPARE(printed.text().count("Voice crashed"), 1);
        time.runNext();
        QCOMPARE(launchedBy(manager), 0);
    }

    void unsafeLog_data()
    {
        const Rows<Prepare> row("prepare");
        row("a symbolic link", Prepare(&::symlink));
        row("a second name", Prepare(&::link));
        row("a FIFO", Prepare([](const char *, const char *log) { return ::mkfifo(log, 0600); }));
        row("somebody else's file", Prepare([](const char *victim, const char *log) {
                return ::rename(victim, log) | ::chown(log, 65534, 65534);
            }));
    }

    void unsafeLog()
    {
        QFETCH(const Prepare, prepare);
        const AgentHome home;
        home.installScript("echo from the agent");
        const QString victim = home.write(u"victim"_s, "");
        if (prepare(qPrintable(victim), qPrintable(home.path(u"agent.log"_s))) != 0) {
            QSKIP("only root can give a file away");
        }
        ServiceManager manager = home.supervisor();
        const PrintedLines printed;

        manager.startVoice();

        QTRY_VERIFY(printed.text().contains("from the agent\n")); // our own output is inherited
        QVERIFY(home.read(u"victim"_s).isEmpty());
        QCOMPARE(QFileInfo(home.path(u"agent.log"_s)).size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestSupervisor)

#include "test_supervisor.moc"
