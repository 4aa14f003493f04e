#include "platform/ChildProcess.h"
#include "setup/Confinement.h"
#include "setup/SetupHome.h"
#include "setup/SetupShell.h"
#include "support/Rows.h"

#include <QSignalSpy>

#include <sys/prctl.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

// The names of the boolean fields that are true.
QStringList truths(const SetupManager &manager)
{
    QStringList names;
    const QMetaObject *type = manager.metaObject();
    for (int i = type->propertyOffset(); i < type->propertyCount(); ++i) {
        if (type->property(i).read(&manager).metaType() == QMetaType::fromType<bool>() &&
            type->property(i).read(&manager).toBool()) {
            names.append(QString::fromUtf8(type->property(i).name()));
        }
    }
    return names;
}

} // namespace

class TestChecks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shell_data()
    {
        const Rows<QString, bool, QString> row("command", "success", "output");
        row("fails", u"echo why; exit 3"_s, false, u"why"_s);
        row("both streams", u"echo a; echo b >&2; echo c"_s, true, u"a\nb\nc"_s);
        row("not UTF-8", u"printf 'a\\377b'"_s, true, {});
        row("a flood", u"/usr/bin/yes"_s, false, u"The command wrote too much output"_s);
        row("environment", u"cat /proc/$$/environ; true"_s, true,
            u"HOME=%1PATH=/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin"_s);
    }

    void shell()
    {
        QFETCH(const QString, command);
        QFETCH(QString, output);
        const SetupHome home;
        ShellResult result = runShell(command, checkTimeout);
        QCOMPARE(result.output.remove(u'\0'), output.replace(u"%1"_s, home.path()));
        QTEST(result.success, "success");
    }

    void nothingThere()
    {
        const SetupHome home;
        home.addTool(u"apt-get"_s);
        SetupManager manager(home.settings(), home.surroundings());
        manager.checkFirstLaunch();
        QVERIFY(waitFor([&] { return manager.showSetup(); }));
        QCOMPARE(truths(manager), QStringList({u"showSetup"_s, u"hasBrew"_s}));
        QCOMPARE(manager.compilerCommand(), u"sudo apt install build-essential"_s);
        QCOMPARE(manager.nodeCommand(), u"sudo apt install nodejs npm"_s);
        QCOMPARE(manager.voiceCommand(), u"sudo apt install curl python3-venv"_s);
    }

    void everythingThere()
    {
        const SetupHome home;
        home.writeScript(u".nvm/versions/node/v20.1.0/bin/node"_s, {});
        home.addTool(u"brew"_s);
        home.addTool(u"pacman"_s); // has nothing to do yet
        home.addTool(u"xcode-select"_s);
        home.addTool(u"tailscale"_s, R"(case "$1" in
            status) echo '{"BackendState":"Running"}';;
            serve) echo 'https://here.ts.net';;
        esac)");
        for (const char *file : {".npm-global/bin/duskrell", ".duskrell/agents/main/agent",
                                 ".ostrelle/venv/bin/python", "Applications/Tailscale.app"}) {
            home.writeScript(QString::fromUtf8(file), {});
        }
        home.write(u".ostrelle/data/models/kokoro-v1.0.onnx"_s, "model");
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.token = u"secret"_s;
        config.save();
        SetupManager manager(home.settings(), home.surroundings());
        const QSignalSpy logs(manager.statusMessages(), &StatusLog::rowsInserted);

        manager.checkFirstLaunch();
        QVERIFY(waitFor([&] { return manager.hasModels(); }) && manager.voiceCommand().isEmpty());
        // Python takes no part in the decision.
        QCOMPARE(truths(manager),
                 QStringList({u"hasXcodeCLT"_s, u"hasBrew"_s, u"hasNode"_s, u"hasDuskrell"_s,
                              u"hasTailscale"_s, u"tailscaleLoggedIn"_s, u"tailscaleServeRunning"_s,
                              u"hasGatewayToken"_s, u"hasAgent"_s, u"hasTailscaleApp"_s,
                              u"hasConfig"_s, u"hasVenv"_s, u"hasModels"_s}));

        // The models are the last check: what they tell comes after everything else.
        QFile::remove(home.path(u"bin/xcode-select"_s));
        home.addTool(u"cc"_s);
        QFile::remove(home.path(u"bin/brew"_s));
        home.write(u".ostrelle/data/models/kokoro-v1.0.onnx.incomplete"_s, "");
        const QSignalSpy xcode(&manager, &SetupManager::hasXcodeCLTChanged);
        manager.runChecks();
        QVERIFY(waitFor([&] { return !manager.hasModels(); }));
        QCOMPARE(manager.xcodeCLTNote(), u"here: cc"_s);
        QCOMPARE(manager.brewNote(), u"here: pacman"_s);
        QCOMPARE(manager.compilerCommand() + manager.brewCommand() + manager.voiceCommand(),
                 u"sudo pacman -S curl python"_s);
        QVERIFY(manager.hasBrew() && manager.hasXcodeCLT() && xcode.isEmpty() && logs.isEmpty());

        QFile::remove(home.path(u".ostrelle/data/models/kokoro-v1.0.onnx.incomplete"_s));
        QFile::remove(home.path(u".ostrelle/venv/bin/python"_s));
        manager.checkFirstLaunch();
        QVERIFY(waitFor([&] { return manager.showSetup(); }));
    }

    void tailscale_data()
    {
        // shown: what is true beside hasTailscale, and the link
        const Rows<QByteArray, QByteArray, QString> row("status", "serve", "shown");
        row("logged out", "echo '{\"BackendState\":\"NeedsLogin\"}'", "true", {});
        row("running, but failing", "echo '{\"BackendState\":\"Running\"}'; exit 1", "true", {});
        row("logged in", "echo '{\"BackendState\":\"Running\"}'", "true", u" tailscaleLoggedIn"_s);
        row("serving", "true", "echo https://a.ts.net", u" tailscaleServeRunning"_s);
        row("serving, but failing", "true", "echo https://a.ts.net; exit 1", {});
        row("not enabled", "true",
            "(echo Serve is not enabled on your tailnet.; echo To enable, visit:; "
            "printf ' \\t https://login.tailscale.com/f/serve?node=1\\t\\n') >&2; exit 1",
            u" tailscaleServeNotEnabled https://login.tailscale.com/f/serve?node=1"_s);
        row("not enabled, no link", "true", "echo it is not enabled",
            u" tailscaleServeNotEnabled"_s);
    }

    void tailscale()
    {
        QFETCH(const QByteArray, status);
        QFETCH(const QByteArray, serve);
        QFETCH(const QString, shown);
        const SetupHome home;
        home.addTool(u"tailscale"_s,
                     "case $1 in status) " + status + ";; serve) " + serve + ";; esac");
        home.write(u".duskrell/agents/main/agent"_s, "");
        SetupManager manager(home.settings(), home.surroundings());
        manager.runChecks();
        QVERIFY(waitFor([&] { return manager.hasAgent(); })); // checked after Tailscale
        const QStringList state = truths(manager) << manager.tailscaleServeEnableURL();
        QCOMPARE(state.join(u' ').remove(u" hasAgent"_s).trimmed(), u"hasTailscale"_s + shown);
    }

    void hungTool()
    {
        const SetupHome home;
        home.addTool(u"tailscale"_s, "sleep 60");
        home.write(u".duskrell/agents/main/agent"_s, "");
        SetupManager manager(home.settings(), home.surroundings());
        manager.runChecks();
        QVERIFY(waitFor([&] { return !home.calls().isEmpty(); }));
        home.addTool(u"tailscale"_s);
        manager.runChecks(); // is not held up by the first
        QVERIFY(waitFor([&] { return manager.hasAgent(); }));
        QVERIFY(manager.brewCommand().contains("Homebrew/install"_L1));
        endAllChildren(); // the last test: nothing can be started any more
        QVERIFY(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && isConfined());
    }
};

QTEST_GUILESS_MAIN(TestChecks)

#include "test_checks.moc"
