#include "core/ExpandPath.h"
#include "platform/ProcessSetup.h"
#include "support/FileSizeLimit.h"
#include "support/PrintedLines.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString configFile = u".ostrelle/config.json"_s;

const QByteArray minimal =
    R"({"gateway":{"url":"http://10.0.0.1:1"},"ports":{"status":1,"voiceAgent":2},)"
    R"("voice":{"enabled":true,"venvPath":"/venv"},)"
    R"("paths":{"statusFile":"/s.json","trackerFile":"~/t.json","cronFile":"c.json"}})";

QByteArray with(QByteArray document, const QByteArray &from, const QByteArray &to)
{
    Q_ASSERT(document.contains(from));
    return document.replace(from, to);
}

} // namespace

class TestConfig : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { prepareProcess(); }

    void fallsBackToTheDefaults_data()
    {
        const Rows<QByteArray> row("content");
        row("no file", {});
        row("saved that is no list", with(minimal, ":1\"}", ":1\",\"saved\":{}}"));
        row("enabled as a number", with(minimal, "true", "1"));
        row("not UTF-8", with(minimal, "/venv", "\xff\xfe"));
        row("nested beyond reason", QByteArray(100000, '['));
        row("port as text", with(minimal, "\"status\":1", "\"status\":\"1\""));
        row("port between two", with(minimal, "\"status\":1", "\"status\":1.5"));
        row("port that is not exact", with(minimal, ":1,", ":9007199254740992,"));
        row("saved entry without url",
            with(minimal, ":1\"}", ":1\",\"saved\":[{\"name\":\"x\"}]}"));
        row("huge", QByteArray(17000000, ' ') + minimal);
    }

    void fallsBackToTheDefaults()
    {
        QFETCH(QByteArray, content);
        const ScratchHome home;
        if (!content.isNull()) {
            home.write(configFile, content);
        }
        const auto store = home.settings().config;
        QCOMPARE(store->snapshot(), OstrelleConfig::defaults());
        QCOMPARE(home.read(configFile), content); // the file, or its absence, stays as it was
        QVERIFY(store->change([](auto &) {}, ConfigStore::Write::Always).result().written);
        QCOMPARE(home.read(configFile + u".broken"_s), content);
    }

    void readsWhatItWrote()
    {
        const ScratchHome home;
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.saved->append({.name = u"Büro \"1\""_s,
                                      .url = u"https://büro.ts.net"_s,
                                      .token = u""_s,
                                      .isMagicDNS = true});
        config.ports.status = 99999;
        config.save();
        QCOMPARE(OstrelleConfig::load(), config);

        config.gateway.saved.reset();
        config.save();
        QCOMPARE(OstrelleConfig::load(), config);
        const QByteArray text = home.read(configFile);
        QVERIFY(!text.contains("saved") && !text.contains("null") && text.contains(": false,\n  "));
    }

    void migratesOldPaths()
    {
        const ScratchHome home;
        QByteArray old = with(minimal, "/s.json", "~/.duskrell/agents/status.json");
        old = with(old, "~/t.json", "/x/projects/tracker.json");
        home.write(configFile, with(old, ",\"cronFile\":\"c.json\"", ""));
        const OstrelleConfig loaded = OstrelleConfig::load();
        const auto saved = QJsonDocument::fromJson(home.read(configFile))[u"paths"].toObject();
        QCOMPARE(saved["statusFile"_L1], u"~/.ostrelle/ostrelle-agent-tracker.json"_s);
        QCOMPARE(saved["trackerFile"_L1], u"~/.ostrelle/ostrelle-project-tracker.json"_s);
        QCOMPARE(saved["cronFile"_L1], u"~/.ostrelle/ostrelle-cron-tracker.json"_s);
        QCOMPARE(OstrelleConfig::load(), loaded);
        QCOMPARE(loaded.gateway.saved, std::nullopt);
        QCOMPARE(loaded.gateway.url, u"http://10.0.0.1:1"_s);
    }

    void holdsWhatThereIsNoRoomFor()
    {
        const ScratchHome home;
        OstrelleConfig::defaults().save();
        const QByteArray before = home.read(configFile);
        const auto store = home.settings().config;
        const PrintedLines printed;
        const QString url(5000, u'x');
        {
            const FileSizeLimit limit(1000);
            const auto put = [&](OstrelleConfig &config) { config.gateway.url = url; };
            QVERIFY(!store->change(put).result().written);
            QCOMPARE(store->snapshot().gateway.url, url);
            const auto next = [](OstrelleConfig &config) { ++config.ports.status; };
            QCOMPARE(store->change(next).result().config.gateway.url, url);
            QCOMPARE(home.read(configFile), before);
            home.write(configFile, with(before, "18794", "18700")); // an edit counts all the same
        }
        QCOMPARE(printed.text().count(" not saved: File too large\n"), 1);
        store->snapshot(); // which every poll takes
        QCOMPARE(OstrelleConfig::load().gateway.url, url);
        QCOMPARE(OstrelleConfig::load().ports.status, 18701);
        QCOMPARE(store->current(), OstrelleConfig::load());
        home.write(configFile, before); // now that it is written, it is not put in once more
        QCOMPARE(store->snapshot(), OstrelleConfig::defaults());
    }

    void finishesAnInterruptedWriteOnceThereIsRoom()
    {
        const ScratchHome home;
        home.write(configFile, "{");
        home.write(configFile + u".unfinished"_s, minimal);
        const auto next = [](OstrelleConfig &config) { ++config.ports.status; };
        std::shared_ptr<ConfigStore> store;
        {
            const FileSizeLimit full(1);
            store = home.settings().config;
            QVERIFY(!store->change(next).result().written);
            QCOMPARE(home.read(configFile), "{"); // and not set aside
        }
        QCOMPARE(store->change(next).result().config.gateway.url, u"http://10.0.0.1:1"_s);
        QCOMPARE(OstrelleConfig::load().ports.status, 3);
    }

    void followsEditsFromOutside()
    {
        const ScratchHome home;
        home.write(configFile, minimal);
        const auto store = home.settings().config;
        store->change([](OstrelleConfig &) {}).waitForFinished();
        QCOMPARE(home.read(configFile), minimal); // whose paths are no old ones
        const QSignalSpy changed(store.get(), &ConfigStore::changed);
        home.write(configFile, with(minimal, "10.0.0.1", "10.0.0.2"));
        QCOMPARE(store->current().gateway.url, u"http://10.0.0.1:1"_s);
        QCOMPARE(store->snapshot().gateway.url, u"http://10.0.0.2:1"_s);
        home.write(configFile, "{");
        QCOMPARE(store->snapshot(), OstrelleConfig::defaults());
        QCOMPARE(store->current().gateway.url, u"http://10.0.0.2:1"_s);
        QTRY_COMPARE(changed.count(), 1);
        // Changes are made to what was read last, and in their order.
        store->change([](OstrelleConfig &config) { ++config.ports.status; });
        const auto last = store->change([](OstrelleConfig &config) { ++config.ports.status; });
        QCOMPARE(last.result().config.gateway.url, u"http://10.0.0.2:1"_s);
        QCOMPARE(OstrelleConfig::load().ports.status, 3);
    }

    void createsOnlyMissingTrackerFiles()
    {
        const ScratchHome home;
        OstrelleConfig config = OstrelleConfig::defaults();
        config.paths.statusFile = home.path(u"elsewhere/deep/status.json"_s);
        home.write(u".ostrelle/ostrelle-project-tracker.json"_s, "");
        {
            const FileSizeLimit full(10);
            OstrelleConfig::ensureTrackerFiles(config);
            QVERIFY(!home.exists(u"elsewhere/deep/status.json"_s)); // for the next start to create
        }
        const PrintedLines printed;
        OstrelleConfig::ensureTrackerFiles(config);
        QCOMPARE(printed.text().count("[Ostrelle] Created /"), 2);
        QCOMPARE(home.read(u"elsewhere/deep/status.json"_s), R"({"agents":{},"completions":[]})");
        QCOMPARE(home.read(u".ostrelle/ostrelle-project-tracker.json"_s), "");
        QCOMPARE(home.read(u".ostrelle/ostrelle-cron-tracker.json"_s),
                 R"({"version":1,"updated":"","jobs":[]})");
    }

    void expandsOnlyTheOwnHome()
    {
        const ScratchHome home;
        QCOMPARE(expandPath(u"~/a/b"_s), home.path(u"a/b"_s));
        for (const QString &path : {u"/a"_s, u"a/~/b"_s, u"~user/a"_s, u"~"_s, u""_s}) {
            QCOMPARE(expandPath(path), path);
        }
    }
};

QTEST_GUILESS_MAIN(TestConfig)
#include "test_config.moc"
