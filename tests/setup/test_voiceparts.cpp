#include "setup/SetupHome.h"

#include <QDir>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestVoiceParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void areInstalled()
    {
        const SetupHome home;
        home.addTool(u"python3"_s, "cd ~; exec /usr/bin/python3 \"$@\"");
        home.write(u"venv.py"_s, "exit(1)"); // planted in the working directory
        home.write(u".config/pip/pip.conf"_s, "[global]\nno-index=1\ndisable-pip-version-check=1");
        home.addTool(u"curl"_s, "case $4 in https:*.onnx) echo model > $3;;"
                                " *) cp -s /dev/null $3; esac"); // which cannot be synced
        home.write(u"resources/voice-agent/config.yaml"_s, "new");
        home.write(u"resources/voice-agent/hey_vorn_mac.ppn"_s, "new");
        home.write(u"resources/voice-agent/sounds/thinking.wav"_s, "wav");
        const QString requirements = u"resources/voice-agent/requirements.txt"_s;
        home.write(requirements, "# as it is\npip >= 20  # brings itself");
        home.write(u".ostrelle/data/hey_vorn_mac.ppn"_s, "mine");
        const QString models = u".ostrelle/data/models"_s;
        home.write(models + u"/kokoro-v1.0.onnx"_s, "cut off");
        home.write(models + u"/kokoro-v1.0.onnx.incomplete"_s, "");
        SetupManager manager(home.settings(), home.surroundings());

        manager.run();
        manager.run(); // one at a time
        QVERIFY(waitFor([&] { return manager.hasModels(); }) && manager.hasConfig()); // meanwhile
        QVERIFY(waitFor([&] { return manager.isComplete(); }) && manager.hasPython());

        const QString saved = u"Config saved to "_s + OstrelleConfig::configPath();
        QCOMPARE(messagesOf(manager),
                 QStringList({u"Creating config…"_s, saved, u"Setting up voice data directory…"_s,
                              u"Downloading Kokoro TTS model (~310MB)…"_s,
                              u"Kokoro model downloaded"_s, u"Downloading voice data (~27MB)…"_s,
                              u"WARNING: Voice data download failed"_s, u"Creating Python venv…"_s,
                              u"Venv created"_s,
                              u"Installing voice dependencies (this takes a few minutes)…"_s,
                              u"✓ Dependencies installed"_s, u"Setup complete!"_s}));
        QCOMPARE(QDir(home.path(models)).entryList(QDir::Files),
                 QStringList(u"kokoro-v1.0.onnx"_s));
        QCOMPARE(home.read(models + u"/kokoro-v1.0.onnx"_s), QByteArray("model\n"));
        QCOMPARE(home.read(u".ostrelle/data/config.yaml"_s), QByteArray("new"));
        QCOMPARE(home.read(u".ostrelle/data/hey_vorn_mac.ppn"_s), QByteArray("mine"));
        QCOMPARE(home.read(u".ostrelle/data/sounds/thinking.wav"_s), QByteArray("wav"));
        QVERIFY(home.exists(u".ostrelle/venv/bin/python"_s) && manager.hasVenv());
        QVERIFY(OstrelleConfig::load().voice.enabled);

        home.write(models + u"/voices-v1.0.bin"_s, "voices");
        const OstrelleConfig before = OstrelleConfig::load();
        manager.run();
        QVERIFY(waitFor([&] { return !manager.isRunning(); }));
        QCOMPARE(messagesOf(manager),
                 QStringList({u"Creating config…"_s, saved, u"Setting up voice data directory…"_s,
                              u"Setup complete!"_s}));
        QCOMPARE(OstrelleConfig::load(), before);

        home.write(requirements, "pip\nabsent[all]==1");
        manager.runChecks();
        QVERIFY(waitFor([&] { return !manager.hasVenv(); }));
    }

    void keepsWhatChangesMeanwhile()
    {
        const SetupHome home;
        OstrelleConfig paired = OstrelleConfig::defaults();
        paired.gateway.url = u"https://paired"_s;
        paired.save();
        home.write(u"meanwhile"_s, home.read(u".ostrelle/config.json"_s));
        OstrelleConfig::defaults().save();
        home.addTool(u"curl"_s, "cp ~/meanwhile ~/.ostrelle/config.json");
        home.writeScript(u"venv/bin/python"_s, {});
        home.addTool(u"python3"_s, "cp -r ~/venv ~/.ostrelle");
        SetupManager manager(home.settings(), home.surroundings());
        manager.run();
        QVERIFY(waitFor([&] { return manager.isComplete(); }) && manager.hasVenv());
        paired.voice.enabled = true;
        QCOMPARE(OstrelleConfig::load(), paired);
        home.addTool(u"curl"_s, "echo { > ~/.ostrelle/config.json");
        manager.run();
        QVERIFY(waitFor([&] { return !manager.isRunning(); }));
        QCOMPARE(OstrelleConfig::load(), paired);
        QVERIFY(messagesOf(manager).value(4).endsWith(u" — The file could not be written"_s));
    }

    void fail()
    {
        const SetupHome home;
        home.addTool(u"curl"_s, "[ -e $3.incomplete ] && echo marked >> ~/calls\n"
                                "printf '  0 310M\\r  '; echo half > $3\n"
                                "echo \"curl: (22) $(seq -s . 200)\" >&2; exit 22");
        home.addRealTool(u"seq"_s);
        home.addTool(u"python3"_s, "cd ~; [ $2 != venv ] || echo '#!/bin/sh' > .ostrelle/$2/bin/"
                                   "python; echo no venv; exit 1");
        home.write(u".ostrelle/venv/mine"_s, "kept");
        home.writeScript(u".ostrelle/venv/bin/python"_s, "exit 1"); // left half made, long ago
        home.addInstaller("exit 7");
        QVERIFY(QDir().mkpath(home.path(u".ostrelle/config.json"_s)));
        SetupManager manager(home.settings(), home.surroundings());

        manager.setSudoPassword(u"secret"_s);
        manager.installDuskrell(); // goes on with the voice parts by itself
        QVERIFY(waitFor([&] { return !manager.isInstallingDuskrell() && !manager.isRunning(); }));

        const QStringList messages = messagesOf(manager);
        QCOMPARE(messages.value(0), u"Creating config…"_s);
        QVERIFY(messages.value(1).startsWith(u"WARNING: Config not saved — "_s));
        const QString warning = u"WARNING: Kokoro download failed — "_s;
        QCOMPARE(messages.value(4).left(warning.size() + 13), warning + u"curl: (22) 1."_s);
        QCOMPARE(messages.value(4).size(), warning.size() + 100);
        QCOMPARE(messages.value(8), u"ERROR: no venv"_s);
        QCOMPARE(manager.problem(), u"⚠ Install finished with errors (exit 7)"_s);
        QVERIFY(manager.isComplete() && !manager.hasVenv() && !manager.hasModels());
        QVERIFY(!home.exists(u".ostrelle/data/models/kokoro-v1.0.onnx"_s));
        QVERIFY(home.calls().contains(u"marked"_s)); // in case the program is killed meanwhile
        QVERIFY(home.exists(u".ostrelle/venv/bin/python"_s) &&
                home.exists(u".ostrelle/venv/mine"_s));

        // What has failed is taken up again, and what ended well is not.
        home.write(u"resources/voice-agent/requirements.txt"_s, "");
        home.addTool(u"python3"_s);
        for (const char *pip : {"exit 1", "exit 0", "exit 0"}) {
            home.writeScript(u".ostrelle/venv/bin/pip"_s,
                             "printf %0301d; echo pip >> ~/calls; "_ba + pip);
            manager.run();
            QVERIFY(waitFor([&] { return !manager.isRunning(); }));
            QCOMPARE(manager.hasVenv(), pip[5] == '0');
            const QString failed = u"WARNING: pip install failed — "_s + QString(300, u'0');
            QCOMPARE(messagesOf(manager).contains(failed), !manager.hasVenv());
            QCOMPARE(manager.problem(), QString());
        }
        QCOMPARE(home.calls().count(u"pip"_s), 2);
    }
};

QTEST_GUILESS_MAIN(TestVoiceParts)
#include "test_voiceparts.moc"
