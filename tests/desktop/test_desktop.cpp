#include "desktop/Desk.h"
#include "settings/KeychainHelper.h"
#include "settings/OstrelleConfig.h"

#include <QScopeGuard>
#include <QTest>

#include <csignal>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestDesktop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aClickOpensThePanelBesideTheIcon()
    {
        const DesktopHome home;
        XSession session;
        session.startTrayHost();
        Program program;
        QVERIFY(XSession::waitForIcon());
        QVERIFY(!XSession::panel());

        XSession::click(XSession::icon()->center());
        QTRY_VERIFY_WITH_TIMEOUT(XSession::panel(), patienceMilliseconds);
        const QRect panel = *XSession::panel();
        QVERIFY(QRect(0, 0, 1280, 800).contains(panel));
        QVERIFY(panel.top() >= XSession::icon()->bottom());

        XSession::press(u"Escape"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!XSession::panel(), patienceMilliseconds);
        XSession::click(XSession::icon()->center(), 2); // a double click leaves it open
        QTest::qWait(1000); // what comes later is no third click of these
        QTRY_VERIFY_WITH_TIMEOUT(XSession::panel(), patienceMilliseconds);
        XSession::click(XSession::icon()->center()); // a second click closes it
        QTRY_VERIFY_WITH_TIMEOUT(!XSession::panel(), patienceMilliseconds);
        QCOMPARE(program.endWith(SIGTERM), 0);
    }

    void trayHostsComeAndGo()
    {
        const DesktopHome home;
        XSession session;
        Program program;
        QTRY_VERIFY_WITH_TIMEOUT(XSession::panel(), patienceMilliseconds); // as a window
        session.startTrayHost();
        QVERIFY(XSession::waitForIcon());
        session.endTrayHost();
        QTRY_VERIFY_WITH_TIMEOUT(!XSession::icon(), patienceMilliseconds);
        session.startTrayHost();
        QVERIFY(XSession::waitForIcon());
        QCOMPARE(program.endWith(SIGTERM), 0);
    }

    void aSecondStartShowsThePanel()
    {
        const DesktopHome home;
        XSession session;
        session.startTrayHost();
        Program program;
        QVERIFY(XSession::waitForIcon());
        QCOMPARE(Program().waitForEnd(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(XSession::panel(), patienceMilliseconds);
        QCOMPARE(program.endWith(SIGTERM), 0);
    }

    void theShortcutMutes_data()
    {
        QTest::addColumn<QByteArray>("waylandDisplay");
        QTest::newRow("an X11 session") << QByteArray();
        QTest::newRow("a Wayland session without the portal") << QByteArray("wayland-none");
    }

    void theShortcutMutes()
    {
        QFETCH(const QByteArray, waylandDisplay);
        qputenv("WAYLAND_DISPLAY", waylandDisplay);
        const auto restore = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
        const DesktopHome home;
        XSession session;
        session.startTrayHost();
        Program program;
        QTRY_VERIFY_WITH_TIMEOUT(home.voiceStatus().contains("\"muted\": false"),
                                 patienceMilliseconds);
        QVERIFY(XSession::waitForIcon());
        QVERIFY(waylandDisplay.isEmpty() || !program.waitForLine("M is not heard").isEmpty());
        const QString mute = u"super+shift+58"_s; // the key of the m in the layout in use
        XSession::useLayouts(u"us,fr"_s);
        XSession::press(u"super+shift+47"_s); // an m only in the layout that is not in use
        XSession::press(mute);
        QTRY_VERIFY_WITH_TIMEOUT(home.voiceStatus().contains("\"muted\": true"),
                                 patienceMilliseconds);
        XSession::press(mute);
        QTRY_VERIFY_WITH_TIMEOUT(home.voiceStatus().contains("\"muted\": false"),
                                 patienceMilliseconds);
        QCOMPARE(program.endWith(SIGTERM), 0);
    }

    void setsUp()
    {
        Desk desk;
        QVERIFY(desk.isOpen);
        QVERIFY(desk.press(u"Install Voice + Finish"_s));
        QVERIFY(desk.shows(u"Setup complete!"_s));
        Desk::screenshot(u"setup"_s);
        QVERIFY(desk.press(u"Done"_s));
        QVERIFY(desk.shows(u"Quick Chat"_s));
        QVERIFY(desk.home.exists(u".ostrelle/data/models/kokoro-v1.0.onnx"_s));
    }

    void chatsMutesAndQuits()
    {
        Desk desk;
        QVERIFY(desk.press(u"Skip"_s));
        QVERIFY(desk.press(u"Ask something…"_s));
        XSession::type(u"hello"_s);
        XSession::press(u"Return"_s);
        QTRY_VERIFY_WITH_TIMEOUT(desk.home.wasAsked(u"/v1/chat/completions"_s),
                                 patienceMilliseconds);
        QVERIFY(desk.press(u"Mute"_s));
        QTRY_VERIFY_WITH_TIMEOUT(desk.home.voiceStatus().contains("\"muted\": true"),
                                 patienceMilliseconds);
        Desk::screenshot(u"ostrelle"_s);
        QVERIFY(desk.press(u"Quit"_s));
        QCOMPARE(desk.program->waitForEnd(), 0);
        QVERIFY(desk.home.voiceStatus().isEmpty());
    }

    void walksTheTabs()
    {
        Desk desk;
        QProcess &notifications = desk.bus.startNotificationDaemon();
        QVERIFY(desk.press(u"Skip"_s));
        const QList<std::pair<QString, QString>> tabs{{u"Projects"_s, u"Project Board"_s},
                                                      {u"Agents"_s, u"Spinal Map"_s},
                                                      {u"Cron"_s, u"Scheduled Jobs"_s},
                                                      {u"Settings"_s, u"CONNECTED TO"_s}};
        for (const auto &[tab, heading] : tabs) {
            QVERIFY(desk.press(tab, u"page tab"_s));
            QVERIFY(desk.shows(heading));
            Desk::screenshot(tab.toLower());
        }
        const QString link = u"ostrelle://config?gatewayBaseURL=http://127.0.0.3:9"_s;
        QCOMPARE(Program({link}).waitForEnd(), 0);
        QVERIFY(desk.shows(u"http://127.0.0.3:9"_s));
        QByteArray shown;
        QTRY_VERIFY_WITH_TIMEOUT(
            (shown += notifications.readAll()).contains("Gateway configured via QR code"),
            patienceMilliseconds);
    }

    void pairsAPhoneAndSwitches()
    {
        Desk desk;
        QVERIFY(desk.press(u"Skip"_s));
        QVERIFY(desk.press(u"Settings"_s, u"page tab"_s));
        QVERIFY(desk.press(u"Show QR to pair phone"_s));
        QVERIFY(desk.shows(u"QR code"_s));
        const QByteArray code = run(u"zbarimg"_s, {u"--raw"_s, u"-q"_s, Desk::screenshot(u"qr"_s)});
        QVERIFY2(code.startsWith("ostrelle://config?"), code);
        QVERIFY(desk.press(u"Show QR to pair phone"_s)); // makes room

        QVERIFY(desk.press(u"Change Token"_s));
        QVERIFY(desk.press(u"Paste gateway token"_s));
        XSession::type(u"s3cret"_s);
        for (const auto &control : desk.reader.controls()) {
            QVERIFY(!desk.reader.text(control).contains("s3cret"_L1));
        }
        XSession::press(u"Return"_s);
        const QString url = desk.home.gateway.url();
        QTRY_COMPARE_WITH_TIMEOUT(KeychainHelper::getToken(url), u"s3cret"_s, patienceMilliseconds);

        QVERIFY(desk.press(u"PROFILES"_s));
        QVERIFY(desk.press(u"Second, http://127.0.0.2:9"_s, u"radio button"_s));
        QVERIFY(desk.press(u"Switch"_s));
        QTRY_COMPARE_WITH_TIMEOUT(OstrelleConfig::load().gateway.url, u"http://127.0.0.2:9"_s,
                                  patienceMilliseconds);
    }

    void renamesAnAgent()
    {
        Desk desk;
        QVERIFY(desk.press(u"Skip"_s));
        QVERIFY(desk.press(u"Agents"_s, u"page tab"_s));
        QVERIFY(desk.press(u"Main"_s));
        QVERIFY(desk.press(u"Display name"_s));
        XSession::press(u"ctrl+a"_s);
        XSession::type(u"Captain"_s);
        Desk::screenshot(u"inspector"_s);
        QVERIFY(desk.press(u"Save"_s));
        QVERIFY(desk.shows(u"Captain"_s));
    }

private:
    static QByteArray run(const QString &tool, const QStringList &arguments)
    {
        QProcess process;
        process.start(tool, arguments);
        process.waitForFinished();
        return process.readAllStandardOutput();
    }
};

QTEST_GUILESS_MAIN(TestDesktop)
#include "test_desktop.moc"
