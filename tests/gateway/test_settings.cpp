#include "core/BackgroundWork.h"
#include "gateway/DuskrellTool.h"
#include "gateway/GatewaySettings.h"
#include "gateway/ProjectTrackingSwitch.h"
#include "gateway/Scripts.h"
#include "settings/SettingsQueues.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<ScratchHome>();
        m_duskrell = scriptedDuskrell(*m_home);
        m_preferences = m_home->settings().preferences;
    }

    void cleanup()
    {
        settingsQueue().waitForDone();
        QVERIFY(finishBackgroundWork(10s));
    }

    void preferencesAreStored()
    {
        {
            GatewaySettings settings(m_preferences);
            QVERIFY(settings.projectTrackingEnabled() && !settings.launchAtLogin());
            settings.setLaunchAtLogin(true);
            settings.setGeminiAPIKey(u"k,\"ü"_s);
            settings.setAutoStartVoice(true);
        }
        m_preferences->set(preference::projectTrackingEnabled, false);
        GatewaySettings settings(m_preferences);
        QVERIFY(settings.autoStartVoice() && !settings.projectTrackingEnabled());
        QCOMPARE(settings.geminiAPIKey(), u"k,\"ü"_s);
        QTRY_VERIFY(settings.launchAtLogin());
        const QString entry = u".config/autostart/ai.duskrell.ostrelle.desktop"_s;
        QVERIFY(m_home->exists(entry));
        QSignalSpy changed(&settings, &GatewaySettings::launchAtLoginChanged);
        for (const bool launch : {false, true, false}) { // what is said of one is late for the next
            settings.setLaunchAtLogin(launch);
        }
        settingsQueue().waitForDone();
        QVERIFY(!m_home->exists(entry));

        // No folder can be made where a file stands.
        QDir(m_home->path(u".config/autostart"_s)).removeRecursively();
        m_home->write(u".config/autostart"_s, "");
        settings.setLaunchAtLogin(true, [&](bool holds) {
            QVERIFY(!holds && !settings.launchAtLogin()); // whoever looks meanwhile
        });
        settings.lookAtLoginItem();
        QTRY_COMPARE(changed.size(), 3 + 2);
    }

    void tracksProjectsInOrder()
    {
        m_home->write(u".duskrell/workspace/projects/ostrelle-unified/skills/ostrelle-connector"
                      u"/scripts/enable-project-tracking.sh"_s,
                      "sleep 0.1; echo enable $PATH >> \"$HOME/calls\"");
        m_home->write(u"duskrell.out"_s,
                      R"({"jobs":[{"id":"1","name":"Other"},{"id":"it\u0027s 2","name":)"
                      R"("OSTRELLE Project Tracker"},{"id":3,"name":"OSTRELLE Project Tracker"},)"
                      R"({"id":"--all","name":"OSTRELLE Project Tracker"}]})");
        GatewaySettings settings(m_preferences, {m_home->path(u"none"_s), m_duskrell});
        QVERIFY(finishBackgroundWork(10s));
        QFile::remove(m_home->path(u"calls"_s));
        settings.setProjectTrackingEnabled(true); // it is already
        settings.setProjectTrackingEnabled(false);
        settings.setProjectTrackingEnabled(true);
        settings.setProjectTrackingEnabled(false);
        QVERIFY(!m_preferences->value(preference::projectTrackingEnabled));
        const QByteArrayList removal{"duskrell cron list --json --all",
                                     "duskrell cron remove it's 2"};
        // The script sees nothing of this program's environment.
        const QByteArrayList enabling{"enable /opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin"};
        QTRY_COMPARE(calls(*m_home), removal + enabling + removal);
    }

    void stopsAtWhatIsNoJobList()
    {
        for (const char *listing :
             {"", "[]", R"({"jobs":[{"id":"1","name":"OSTRELLE Project Tracker"},"x"]})"}) {
            m_home->write(u"duskrell.out"_s, listing);
            QVERIFY2(!disableProjectTracking({m_duskrell}), listing);
        }
        QVERIFY(!calls(*m_home).contains("duskrell cron remove 1"));
    }

    // Where no search path leads, and run by what stands beside it.
    void findsTheToolOfNpm()
    {
        QVERIFY(!disableProjectTracking({}));
        m_home->writeScript(u".npm-global/bin/duskrell"_s, "exec beside");
        m_home->writeScript(u".npm-global/bin/beside"_s, R"(echo '{"jobs":[]}')");
        QVERIFY(disableProjectTracking({}).has_value());
        QFile::remove(m_duskrell); // to which this program's own search path leads
        QCOMPARE(renewGatewayToken().value_or(QString()), u"{\"jobs\":[]}"_s);
    }

private:
    std::unique_ptr<ScratchHome> m_home; // one for each test
    QString m_duskrell;
    std::shared_ptr<Preferences> m_preferences;
};

QTEST_GUILESS_MAIN(TestSettings)
#include "test_settings.moc"
