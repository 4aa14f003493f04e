#include "platform/ChildProcess.h"
#include "platform/ProcessSetup.h"
#include "support/FileSizeLimit.h"
#include "support/PrintedLines.h"
#include "support/Processes.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"
#include "tracker/AgentSyncService.h"
#include "tracker/CronSyncService.h"

#include <QTest>

#include <sys/stat.h>

using namespace ostrelle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class TestSync : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareProcess(); }
    void cleanup() { QVERIFY(finishBackgroundWork(10s)); }

    void runsTheTool_data()
    {
        const Rows<QByteArray, QString> row("script", "output");
        row("exactly two variables", "env -u PWD -u _ -u SHLVL -u OLDPWD | sort",
            u"HOME=%1\nPATH=/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin\n"_s);
        row("arguments", "printf '%s|' \"$@\"", u"a b|'c'|"_s);
        row("error status and error output", "echo out; echo err >&2; exit 3", u"out\n"_s);
        row("not UTF-8", "printf 'a\\377b'", {});
        row("flood", "exec cat /dev/zero", {});
        row("dies", "printf part; kill -9 $$", u"part"_s);
        row("leaves something behind", "sleep 600 & echo $! >~/left; echo out", u"out\n"_s);
        row("hangs", "echo out; exec sleep 600", {});
    }

    void runsTheTool()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, output);
        const ScratchHome home;
        const GatewayTool tool({home.writeScript(u"duskrell"_s, script)}, 2s);
        QCOMPARE(tool.findDuskrell(), home.path(u"duskrell"_s));
        const QString expected = output.contains(u"%1"_s) ? output.arg(home.path()) : output;
        QCOMPARE(tool.runCommand(tool.findDuskrell(), {u"a b"_s, u"'c'"_s}), expected);
        QTRY_VERIFY(!isAlive(home.read(u"left"_s).toInt()));
    }

    void findsTheTool_data()
    {
        // open: to everybody
        const Rows<QString, QString> row("open", "found");
        row("at the place itself", {}, u"place/duskrell"_s);
        row("somebody else's at the place", u"place/duskrell"_s, u"first/duskrell"_s);
        row("a folder for everybody", u"place"_s, u"first/duskrell"_s);
        row("a link through such a folder", u"hop"_s, u"first/duskrell"_s);
    }

    void findsTheTool()
    {
        QFETCH(QString, open);
        QFETCH(QString, found);
        const ScratchHome home;
        for (const QString &folder : {u"place"_s, u"rogue"_s, u"first"_s}) {
            home.writeScript(folder + u"/duskrell"_s, {});
        }
        QDir(home.path()).mkdir(u"hop"_s);
        QFile::rename(home.path(u"place/duskrell"_s), home.path(u"place/real"_s));
        QFile::link(home.path(u"place/real"_s), home.path(u"hop/link"_s));
        QFile::link(u"../hop/./link"_s, home.path(u"place/duskrell"_s));
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", u":.:%1/rogue:%1/first:"_s.arg(home.path()).toUtf8() + path);
        for (const QString &file : {u"rogue"_s, open}) {
            QVERIFY(file.isEmpty() || ::chmod(qPrintable(home.path(file)), 0777) == 0);
        }
        const GatewayTool tool({home.path(u"missing"_s), home.path(u"place/duskrell"_s)});
        const PrintedLines printed; // once of each
        QCOMPARE(tool.findDuskrell(), home.path(found));
        QCOMPARE(tool.findDuskrell(), home.path(found));
        QCOMPARE(printed.text().count("Passed over, because "), open.isEmpty() ? 0 : 2);
        qputenv("PATH", path);

        // Where no search path leads, and run by what stands beside it.
        const QString nvm = u".nvm/versions/node/v20.1.0/bin/"_s;
        home.writeScript(u".nvm/versions/node/v9.9.0/bin/duskrell"_s, {});
        home.writeScript(nvm + u"node"_s, "shift; echo $*");
        home.writeScript(nvm + u"duskrell"_s, {});
        home.write(nvm + u"duskrell"_s, "#!/usr/bin/env node\n");
        QVERIFY(QDir(home.path()).mkpath(u".local/bin/duskrell"_s)); // is no tool
        const GatewayTool hidden(QStringList{});
        QCOMPARE(hidden.runCommand(hidden.findDuskrell(), {u"list"_s}), u"list\n"_s);
    }

    void keepsTheFileWhenAPassFails()
    {
        const ScratchHome home;
        home.write(u"status.json"_s, "before");
        OstrelleConfig config = OstrelleConfig::defaults();
        config.paths.statusFile = home.path(u"status.json"_s);
        // For the last one's document there is no room.
        for (const char *script : {"", "echo error: no gateway", "echo '{\"sessions\":[]}'"}) {
            AgentSyncService service(config, GatewayTool({home.writeScript(u"tool"_s, script)}));
            const FileSizeLimit fullDisk(20);
            service.sync();
            QVERIFY(finishBackgroundWork(10s));
            QVERIFY2(home.read(u"status.json"_s) == "before", script);
            // After a home that has gone, as soon as there is room.
            QVERIFY(!home.exists(u".ostrelle/ostrelle-project-tracker.json"_s));
        }
        AgentSyncService(config).sync();
        QVERIFY(finishBackgroundWork(10s));
        QVERIFY(home.exists(u".ostrelle/ostrelle-project-tracker.json"_s));
    }

    void cronPass_data()
    {
        const Rows<QByteArray, QByteArray> row("script", "content");
        row("job list", "echo '{\"jobs\":[{\"id\":\"'$4'\"}]}'", "\"id\": \"--all\"");
        row("knows no --all", "test $# = 3 && echo '{\"jobs\":[{\"id\":\"'$*'\"}]}'",
            "\"id\": \"cron list --json\"");
        row("no job list", "echo \"[$*]\"", "[cron list --json]\n");
        row("no job list, then nothing", "test $# = 3 || echo '[]'", "");
        row("nothing at all", QByteArray(), "before");
    }

    void cronPass()
    {
        QFETCH(QByteArray, script);
        QFETCH(QByteArray, content);
        const ScratchHome home;
        home.write(u".ostrelle/ostrelle-cron-tracker.json"_s, "before");
        OstrelleConfig config = OstrelleConfig::defaults();
        config.paths.cronFile = std::nullopt;
        CronSyncService service(config, GatewayTool({home.writeScript(u"tool"_s, script)}));
        service.sync();
        QVERIFY(finishBackgroundWork(10s));
        const QByteArray written = home.read(u".ostrelle/ostrelle-cron-tracker.json"_s);
        if (content.startsWith("\"id\"")) {
            QVERIFY2(written.contains(content), written);
        } else {
            QCOMPARE(written, content);
        }
    }

    void passesGoOn()
    {
        struct Ticking : SyncService {
            Ticking(Pass pass, std::chrono::milliseconds every)
                : SyncService(std::move(pass), nullptr, every)
            {
            }
        };
        const auto passes = std::make_shared<std::atomic_int>();
        const auto count = [passes](const std::stop_token &) { ++*passes; };
        Ticking hourly(count, 1h);
        hourly.start();
        QVERIFY(!QTest::qWaitFor([&] { return *passes > 1; }, 50));
        QTRY_COMPARE(*passes, 1);
        Ticking often(count, 1ms);
        often.start();
        QTRY_VERIFY(*passes >= 4);
    }

    void hungRunMakesWay()
    {
        const ScratchHome home;
        home.write(u"hangs"_s, {});
        const QString tool = home.writeScript(
            u"tool"_s, "echo >> ~/starts; test ! -e ~/hangs || exec sleep 600;"
                       " test \"$*\" = 'sessions --all-agents --active 2 --json' &&"
                       " echo '{\"sessions\":[]}'");
        OstrelleConfig config = OstrelleConfig::defaults();
        config.paths.statusFile = home.path(u"status.json"_s);
        AgentSyncService service(config, GatewayTool({tool}, 10min));
        for (int i = 1; i <= 10; ++i) {
            service.sync();
            QTRY_COMPARE(home.read(u"starts"_s).size(), i);
        }
        QVERIFY(QFile::remove(home.path(u"hangs"_s)));
        service.sync();
        // Indented and sorted.
        QTRY_VERIFY(home.read(u"status.json"_s).startsWith("{\n    \"agents\": {\n"));
        endAllChildren(); // those that still hang
    }
};

QTEST_GUILESS_MAIN(TestSync)
#include "test_sync.moc"
