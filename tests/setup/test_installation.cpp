#include "settings/SettingsQueues.h"
#include "setup/InstallerOutput.h"
#include "setup/SetupHome.h"
#include "support/Rows.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QProcess>

#include <csignal>
#include <cstdlib>
#include <optional>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString begun = u"Installing Duskrell + dependencies…"_s;
const QString patience = u"This may take 5–10 minutes on a fresh Mac."_s;
const QString askpass = u".run/ostrelle-askpass.sh"_s;

void addVoiceParts(const SetupHome &home)
{
    home.writeScript(u".ostrelle/venv/bin/python"_s, {});
    home.write(u".ostrelle/data/models/kokoro-v1.0.onnx"_s, "model");
    home.write(u".ostrelle/data/models/voices-v1.0.bin"_s, "voices");
}

bool install(SetupManager &manager, const QString &password = u"secret"_s)
{
    manager.installDuskrell(u" "_s); // only asks for one
    manager.setSudoPassword(password);
    manager.installDuskrell();
    manager.installDuskrell(); // one at a time
    return waitFor([&] { return !manager.isInstallingDuskrell() && !manager.isRunning(); });
}

} // namespace

class TestInstallation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void password_data()
    {
        const Rows<bool, QString, QString> row("hasRuntimeDirectory", "typed", "script");
        row("runtime directory", true, u"it's $5;\"x\""_s, u"echo 'it'\\''s $5;\"x\"'"_s);
        row("none", false, u"-n \\x"_s, u"printf '%s\\n' '-n \\x'"_s);
    }

    void password()
    {
        QFETCH(const bool, hasRuntimeDirectory);
        QFETCH(const QString, typed);
        QFETCH(const QString, script);
        const SetupHome home;
        addVoiceParts(home);
        home.addTool(u"sudo"_s, "cat >> ~/calls");
        home.addInstaller("/usr/bin/stat -c %a ${SUDO_ASKPASS%/*} $SUDO_ASKPASS\n"
                          "cat $SUDO_ASKPASS; echo; $SUDO_ASKPASS\n"
                          "echo \"$SUDO_PASS $NONINTERACTIVE $HOME\"");
        if (!hasRuntimeDirectory) {
            qputenv("XDG_RUNTIME_DIR", home.write(u"file"_s, "").toUtf8());
        }
        SetupManager manager(home.settings(), home.surroundings());

        QVERIFY(install(manager, u' ' + typed + u' '));

        QCOMPARE(messagesOf(manager),
                 QStringList({begun, patience, u"700"_s, u"700"_s, u"#!/bin/bash"_s, script, typed,
                              typed + u" 1 "_s + home.path(), u"✓ Installation complete!"_s}));
        QCOMPARE(home.calls(), QStringList({u"sudo -S -v"_s, typed}));
        QVERIFY(manager.sudoPassword().isEmpty());
        QVERIFY(!home.exists(askpass) && !home.exists(u".ostrelle/run/ostrelle-askpass.sh"_s));
        QVERIFY(!manager.isComplete());
    }

    // A program that may not use sudo has the installer run outside where it can, and its password
    // through a pipe.
    void confined_data()
    {
        const Rows<bool, QByteArray, QString, bool> row("hasBus", "isActive", "told", "isUnit");
        row("as a unit", true, "exit 3", u"-n \\x  y 1 "_s, true);
        row("a bus that has ended", false, "exit 3", u"-n \\x  y 1 "_s, false);
        row("an older unit", true, "", u"ERROR: the installer still runs"_s, false);
    }

    void confined()
    {
        QFETCH(const bool, hasBus);
        QFETCH(const QByteArray, isActive);
        QFETCH(const QString, told);
        const SetupHome home;
        addVoiceParts(home);
        home.write(u".bash_profile"_s, "PATH=$HOME/bin; read -r swallowed");
        QLocalServer systemd;
        QLocalServer bus;
        QVERIFY(QDir().mkpath(home.path(u".run/systemd"_s)));
        QVERIFY(systemd.listen(home.path(u".run/systemd/private"_s)));
        if (hasBus) {
            QVERIFY(bus.listen(home.path(u".run/bus"_s)));
        } else {
            home.write(u".run/bus"_s, {}); // its socket stays
        }
        home.addTool(u"systemctl"_s, isActive);
        home.addTool(u"systemd-run"_s, ": ${XDG_RUNTIME_DIR:?}\nwhile [ $1 != -- ]; do case $1 in "
                                       "*=*) export \"${1#--setenv=}\"; esac; shift; done; shift\n"
                                       "exec bash -c 'exec \"${@//\\$\\$/$}\"' - \"$@\"");
        home.write(u"$$/install-duskrell.sh"_s, "echo \"$SUDO_PASS $NONINTERACTIVE $(cat)\"");
        SetupSurroundings surroundings = home.surroundings();
        surroundings.isConfined = true;
        surroundings.resources = home.path(u"$$"_s);
        SetupManager manager(home.settings(), surroundings);
        QVERIFY(install(manager, u"-n \\x  y"_s));
        const QString shown = messagesOf(manager).value(2);
        QVERIFY2(shown.startsWith(told), qPrintable(shown));
        const QString calls = home.calls().join(u'\n');
        QVERIFY(!calls.contains("\\x"_L1));
        QTEST(calls.contains("--unit ostrelle-install"_L1), "isUnit");
    }

    void installer_data()
    {
        const Rows<QByteArray, QStringList> row("script", "messages");
        row("fails", "echo ' a '; echo; echo b >&2; exit 4",
            {begun, patience, u" a "_s, u"b"_s, u"⚠ Install finished with errors (exit 4)"_s});
        row("refuses the password", "echo a; echo SUDO_FAILED: no; echo b; exit 1",
            {u"Incorrect password — try again."_s});
        row("is not there", {},
            {begun, patience, u"ERROR: install-duskrell.sh not found in app bundle"_s});
    }

    void installer()
    {
        QFETCH(const QByteArray, script);
        QFETCH(const QStringList, messages);
        const SetupHome home;
        addVoiceParts(home);
        if (!script.isEmpty()) {
            home.addInstaller(script);
        }
        SetupManager manager(home.settings(), home.surroundings());
        QVERIFY(install(manager));
        QCOMPARE(messagesOf(manager), messages);
        QCOMPARE(manager.sudoPasswordError(), messages.size() == 1);
        QCOMPARE(manager.installProblem(), messages.size() == 1 ? QString() : messages.last());
        QCOMPARE(manager.problem(), messages.last());
        QVERIFY(!home.exists(askpass) && !manager.needsSudoPassword());
        home.addInstaller("true"); // and of the first try nothing is left
        QVERIFY(install(manager));
        QCOMPARE(messagesOf(manager),
                 QStringList({begun, patience, u"✓ Installation complete!"_s}));
        QVERIFY(!manager.sudoPasswordError() && manager.installProblem().isEmpty());
        QVERIFY(manager.problem().isEmpty() && !manager.isComplete());
        QFile::remove(home.path(u".ostrelle/data/models/kokoro-v1.0.onnx"_s)); // all else is there
        QVERIFY(install(manager) && manager.isComplete());
    }

    void otherWaysOut_data()
    {
        const Rows<QString> row("way");
        row("destroyed", u"destroyed"_s);
        row("exit", u"exit"_s);
        row("quick exit", u"quick_exit"_s);
        row("killed", u"kill"_s); // the next start cleans up
    }

    void otherWaysOut()
    {
        QFETCH(const QString, way);
        const SetupHome home;
        home.addInstaller("echo $$ > ~/started; exec sleep 60");
        const int status =
            QProcess::execute(QCoreApplication::applicationFilePath(), {u"--leave-by"_s, way});
        QCOMPARE(status == 0, way != "kill"_L1);
        QCOMPARE(home.exists(askpass), way == "kill"_L1);
        QVERIFY(!home.read(u"started"_s).isEmpty());
        ::kill(home.read(u"started"_s).trimmed().toInt(), SIGKILL);

        const QString elsewhere = home.write(u".ostrelle/run/ostrelle-askpass.sh"_s, "left");
        const SetupManager manager(home.settings(), home.surroundings());
        QVERIFY(waitFor([&] { return !home.exists(askpass) && !QFile::exists(elsewhere); }));
    }

    void outputInPieces()
    {
        const QByteArray output = "one\n\nzwölf\nSUDO_FAILED\nlast";
        for (qsizetype cut = 0; cut <= output.size(); ++cut) {
            InstallerOutput reader;
            QByteArrayList messages = reader.take(output.left(cut));
            messages += reader.take(output.mid(cut));
            const QByteArray shown = messages.join();
            QVERIFY2(reader.sudoFailed(), shown);
            QVERIFY2(shown.startsWith("onezwölf") && shown.endsWith("last"), shown);
        }
        InstallerOutput reader;
        QCOMPARE(reader.take("a\n\xff\n"), QByteArrayList());
        QCOMPARE(reader.take("b\n"), QByteArrayList({"b"}));
    }

    void flood()
    {
        const SetupHome home;
        addVoiceParts(home);
        home.addInstaller("for i in {1..20000}; do echo line $i; done\n"
                          "printf 'x\\n%.0s' {1..150000}\n"
                          "printf 'y%.0s' {1..150000}");
        SetupManager manager(home.settings(), home.surroundings());
        const QAbstractItemModelTester tester(manager.statusMessages());
        QVERIFY(install(manager));
        QStringList messages = messagesOf(manager);
        QCOMPARE(messages.takeLast(), u"✓ Installation complete!"_s);
        QCOMPARE(messages.value(20'001), u"line 20000"_s);
        QCOMPARE(messages.value(170'001), u"x"_s);
        QCOMPARE(messages.mid(170'002).join(QString()), QString(150'000, u'y'));
    }

    void token()
    {
        const SetupHome home;
        SetupManager manager(home.settings(), home.surroundings());
        manager.setGatewayTokenInput(u" tok \n"_s);
        const QString noStore = home.path(u".ostrelle/secrets.json"_s);
        QVERIFY(QDir().mkpath(noStore));
        manager.saveGatewayToken();
        QVERIFY(waitFor([&] { return !manager.gatewayTokenProblem().isEmpty(); }));
        QVERIFY(QDir().rmdir(noStore) && !manager.hasGatewayToken());
        manager.saveGatewayToken();
        QVERIFY(waitFor([&] { return manager.hasGatewayToken(); }));
        QCOMPARE(manager.gatewayTokenProblem(), QString());
        manager.setGatewayTokenInput(u" \n"_s);
        manager.saveGatewayToken();
        tokenQueue().waitForDone();
        QCOMPARE(home.storedToken(KeychainHelper::activeKey), u"tok"_s);
    }

    void onboarding()
    {
        const SetupHome home;
        home.writeScript(u"bin/x-terminal-emulator"_s, "exit 1"); // has no display, for instance
        home.writeScript(u".bun/bin/duskrell"_s, {});
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", home.path(u"bin:"_s).toUtf8() + path);
        SetupManager manager(home.settings(), home.surroundings());
        manager.openOnboarding();
        QVERIFY(waitFor([&] { return manager.statusMessages()->rowCount() == 1; }));
        QCOMPARE(messagesOf(manager),
                 QStringList(u"Could not open a terminal. Run in one: duskrell onboard"_s));

        home.writeScript(u"bin/x-terminal-emulator"_s, "echo \"$@\" > ~/opened");
        manager.openOnboarding();
        const QString script = home.path(u".run/ostrelle-onboard.command"_s);
        QVERIFY(waitFor([&] { return home.read(u"opened"_s) == "-e " + script.toUtf8() + '\n'; }));
        QCOMPARE(QFile::permissions(script), QFile::Permissions(0x7755));
        QVERIFY(home.read(u".run/ostrelle-onboard.command"_s)
                    .contains("export PATH='" + home.path(u".bun/bin"_s).toUtf8() + "':$PATH:"));
        qputenv("PATH", path);
    }
};

// Ends in the middle of an installation.
int leaveBy(const QString &way)
{
    std::optional<SetupManager> manager;
    manager.emplace(Settings(), SetupSurroundings{.resources = homeDirectory() + u"/resources"_s,
                                                  .sudoSearchPath = {},
                                                  .isConfined = false});
    manager->setSudoPassword(u"secret"_s);
    manager->installDuskrell();
    const bool hasStarted =
        waitFor([&] { return QFileInfo(homeDirectory() + u"/started"_s).size() > 0; });
    if (way == "kill"_L1) {
        ::raise(SIGKILL);
    }
    if (way == "destroyed"_L1) {
        manager.reset();
        std::_Exit(!hasStarted);
    }
    way == "exit"_L1 ? std::exit(!hasStarted) : std::quick_exit(!hasStarted);
}

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    if (const QStringList arguments = app.arguments(); arguments.value(1) == "--leave-by"_L1) {
        return leaveBy(arguments.value(2));
    }
    TestInstallation test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_installation.moc"
