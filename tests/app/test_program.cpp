#include "app/Program.h"
#include "core/ToolEnvironment.h"
#include "settings/OstrelleConfig.h"
#include "support/Exchange.h"
#include "support/PrivateSession.h"
#include "support/Processes.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"
#include "support/SimulatedGateway.h"

#include <QTest>

#include <csignal>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString preferences = u".config/ai.duskrell.ostrelle.conf"_s;

// A home with a status server port that the kernel chooses, and the given gateway tool first on the
// search path.
class ProgramHome : public ScratchHome
{
public:
    explicit ProgramHome(const QByteArray &tool = "exit 1")
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        config.ports.status = 0;
        config.save();
        writeScript(u"bin/duskrell"_s, tool);
        qputenv("PATH", path(u"bin"_s).toUtf8() + ":/usr/local/bin:/usr/bin:/bin");
    }
};

QByteArray get(quint16 port, const QByteArray &target)
{
    return exchange(port, "GET " + target + " HTTP/1.1\r\n\r\n");
}

} // namespace

class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { skipWhereThereAre(gatewayToolPlaces()); }

    void publishesWhatTheGatewayToolSays()
    {
        const ProgramHome home(R"(case "$1" in
            sessions) echo '{"sessions":[{"key":"agent:main:main","agentId":"main"}]}' ;;
            cron) echo '{"jobs":[{"id":"1","name":"Nightly"}]}' ;;
            esac)");
        Program program;
        const quint16 port = program.waitForPort();
        QTRY_VERIFY_WITH_TIMEOUT(get(port, "/status").contains("Main session"),
                                 patienceMilliseconds);
        QTRY_VERIFY_WITH_TIMEOUT(get(port, "/cron").contains("Nightly"), patienceMilliseconds);
        QVERIFY(get(port, "/projects").endsWith(R"({"version":1,"updated":"","projects":[]})"));
        QCOMPARE(program.endWith(SIGTERM), 0);
        QVERIFY(!program.output().contains("(null)")); // as after a library that was not found
    }

    void endsWhatItStarted_data()
    {
        const Rows<int> row("signal");
        row("asked to quit", 0);
        row("TERM", SIGTERM);
        row("killed outright", SIGKILL);
    }

    // A gateway tool that hangs and a voice agent, neither of which ends when asked to.
    void endsWhatItStarted()
    {
        QFETCH(int, signal);
        const ProgramHome home("trap '' TERM INT HUP; while [ -e ~ ]; do sleep 1; done & "
                               "echo $! > ~/helper.pid; echo $$ > ~/$1.pid; wait");
        home.write(u".ostrelle/voice_agent.py"_s, {});
        home.writeScript(
            u".ostrelle/venv/bin/python"_s,
            "[ \"$1\" = -I ] && exit;" // the setup asks it for its packages
            "trap '' TERM; (while :; do sleep 1; done) & echo $! > \"$HOME/recorder.pid\";"
            " echo $$ > \"$HOME/agent.pid\"; while :; do sleep 1; done");
        OstrelleConfig config = OstrelleConfig::load();
        config.voice.enabled = true;
        config.save();
        home.write(preferences, "[General]\nautoStartVoice=true\n");
        Program program;
        QList<pid_t> started;
        for (const QString &file :
             {u"sessions.pid"_s, u"cron.pid"_s, u"recorder.pid"_s, u"agent.pid"_s}) {
            QTRY_VERIFY_WITH_TIMEOUT(home.read(file).trimmed().toInt() > 0, patienceMilliseconds);
            started.append(home.read(file).trimmed().toInt());
        }
        const QByteArray line = program.waitForLine("[ServiceManager] Voice agent started (PID ");
        QCOMPARE(line.split(' ').last().chopped(1).toInt(), started.last());
        const QString pidFile = u".ostrelle/voice-agent.pid"_s;
        QTRY_VERIFY(home.exists(pidFile));
        QVERIFY(signal != 0 || QProcess::execute(builtProgram(u"ostrellectl"_s), {u"quit"_s}) == 0);
        QCOMPARE(program.endWith(signal), signal == SIGKILL ? -1 : 0);
        QCOMPARE(home.exists(pidFile), signal == SIGKILL);
        const pid_t helper = home.read(u"helper.pid"_s).trimmed().toInt(); // of a tool that hangs
        QTRY_VERIFY(signal == SIGKILL || !isAlive(helper));
        for (const pid_t pid : started) {
            QTRY_VERIFY(!isAlive(pid));
        }
        // Nothing that was left behind keeps the next start from working.
        QVERIFY(Program().waitForPort() != 0);
    }

    void handsASecondStartToTheFirst()
    {
        const ProgramHome home;
        PrivateSession session;
        session.startKeyring();
        const SimulatedGateway gateway(home);
        playSimulator(home, {{u"record"_s, true}});
        // Whose token the link of this start brings it does not say: it is not kept.
        Program first({u"note:for me"_s, u"Ostrelle://config?token=secret"_s});
        QVERIFY(first.waitForPort() != 0);
        QFile commandLine(u"/proc/%1/cmdline"_s.arg(first.pid()));
        QVERIFY(commandLine.open(QIODevice::ReadOnly));
        QVERIFY(!commandLine.readAll().contains("secret"));
        QCOMPARE(Program().waitForEnd(), 0);
        const auto refused =
            u"ostrelle://config?gatewayBaseURL=http://me:hidden@%1&token=hidden"_s.arg(
                QString(300, u'x'));
        QCOMPARE(Program({refused}).waitForEnd(), 0);
        const QString base = gateway.url();
        Program second({u"ostrelle://config?gatewayBaseURL=%1&token=s%2526t"_s.arg(base)});
        QCOMPARE(second.waitForEnd(), 0);

        QTRY_COMPARE_WITH_TIMEOUT(OstrelleConfig::load().gateway.url, base, patienceMilliseconds);
        QCOMPARE(OstrelleConfig::load().gateway.saved->size(), 2);
        QTRY_VERIFY_WITH_TIMEOUT(gateway.wasAsked(u"/health"_s), patienceMilliseconds);
        QTRY_VERIFY_WITH_TIMEOUT(gateway.wasAsked(u"/v1/models"_s), patienceMilliseconds);
        QCOMPARE(home.storedToken(base), u"s%26t"_s);
        QTRY_COMPARE(home.storedToken(KeychainHelper::activeKey), u"s%26t"_s);
        QCOMPARE(home.storedToken(OstrelleConfig::defaults().gateway.url), std::nullopt);
        QCOMPARE(first.endWith(SIGTERM), 0);
        QVERIFY(!first.output().contains("s%26t") && !first.output().contains("hidden"));
        QVERIFY(first.output().contains("Link for \"" + QByteArray(253, 'x') + "\" refused"));
        QVERIFY(!home.read(u".ostrelle/secrets.json"_s).contains("s%26t"));
    }

    void enablesProjectTrackingOnce()
    {
        const ProgramHome home;
        home.write(u".duskrell/workspace/projects/ostrelle-unified/skills/ostrelle-connector"
                   "/scripts/enable-project-tracking.sh"_s,
                   "echo run >> \"$HOME/runs\"\n");
        const QString installed = home.writeScript(u"bin/ostrelle"_s, {});
        const QString loginItem = u".config/autostart/ai.duskrell.ostrelle.desktop"_s;
        home.write(loginItem, "[Desktop Entry]\nExec=/before/it/was/moved/ostrelle\n");
        for (int start = 0; start < 2; ++start) {
            Program program;
            QVERIFY(program.waitForPort() != 0);
            QTRY_COMPARE_WITH_TIMEOUT(home.read(u"runs"_s), "run\n", patienceMilliseconds);
            QTRY_VERIFY(home.read(preferences).contains("projectTrackingEnabled=true"));
            QTRY_VERIFY(home.read(loginItem).contains(installed.toUtf8()));
            QCOMPARE(program.endWith(SIGHUP), 0);
        }
        QCOMPARE(home.read(u"runs"_s), "run\n");
    }

    void startsInABrokenHome_data()
    {
        const Rows<QString, QByteArray> row("file", "content");
        row("the directory is a file", u".ostrelle"_s, "in the way");
        row("preferences are noise", u".config/ai.duskrell.ostrelle.conf"_s,
            QByteArray("\0\xff[noise\n", 9));
        row("configuration directory is a file", u".config"_s, "x");
        row("configuration is noise", u".ostrelle/config.json"_s, "\xff\xff{");
    }

    void startsInABrokenHome()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        const ProgramHome home;
        QDir(home.path(file)).removeRecursively();
        home.write(file, content);
        Program program;
        // Where the configuration is lost the default port holds, which may be taken here.
        QVERIFY(!program.waitForLine("[StatusServer]").isEmpty());
        QCOMPARE(program.endWith(SIGINT), 0);
        QCOMPARE(home.read(file), content);
    }
};

QTEST_GUILESS_MAIN(TestProgram)
#include "test_program.moc"
