#include "desktop/Desk.h"
#include "support/Processes.h"
#include "support/Rows.h"

#include <QImage>
#include <QScopeGuard>
#include <QTest>

#include <csignal>

using namespace ostrelle;
using namespace Qt::StringLiterals;

class TestDesktop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Else all that fails together shows as nothing but a time-out.
    void init() const
    {
        if (m_failures > 2) {
            QSKIP("enough has failed");
        }
    }

    void cleanup() { m_failures += QTest::currentTestFailed() ? 1 : 0; }

    void initTestCase() { qunsetenv("DISPLAY"); } // whose server may end meanwhile

    void aClickOpensThePanelBesideTheIcon()
    {
        const DesktopHome home;
        XSession session;
        Program program;
        QVERIFY(XSession::waitForIcon());
        QVERIFY(!XSession::panel());

        XSession::click(XSession::icon()->center());
        QTRY_VERIFY_WITH_TIMEOUT(XSession::panel(), patienceMilliseconds);
        const QRect panel = *XSession::panel();
        QVERIFY(QRect(0, 0, 1280, 1600).contains(panel));
        QCOMPARE(panel.top(), XSession::icon()->bottom() + 5);

        XSession::press(u"Escape"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!XSession::panel(), patienceMilliseconds);
        for (int i = 0; i < 2; ++i) { // a double click leaves it open, also an open one
            XSession::click(XSession::icon()->center(), 2);
            QTest::qWait(1000); // what comes later is no third click of these
            QTRY_VERIFY_WITH_TIMEOUT(XSession::panel(), patienceMilliseconds);
        }
        XSession::click(XSession::icon()->center()); // a second click closes it, for good
        QTRY_VERIFY_WITH_TIMEOUT(!XSession::panel(), patienceMilliseconds);
        QVERIFY(!QTest::qWaitFor([] { return XSession::panel().has_value(); }, 1000));
        QCOMPARE(program.endWith(SIGTERM), 0);
        QVERIFY(!program.output().contains("wayland")); // is not tried first
    }

    void anotherProgramShowsThePanel_data()
    {
        const Rows<QString, QStringList> row("name", "arguments");
        row("a second start", u"ostrelle"_s, {});
        row("from a terminal", u"ostrellectl"_s, {u"panel"_s});
    }

    void anotherProgramShowsThePanel()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, arguments);
        const DesktopHome home;
        PrivateSession bus;
        XSession session;
        Program program;
        QVERIFY(XSession::waitForIcon());
        bus.freeze(true);
        for (int i = 0; i < 2; ++i) { // the first one must not hold up the second
            QCOMPARE(QProcess::execute(builtProgram(name), arguments), 0);
        }
        bus.freeze(false);
        QTRY_VERIFY_WITH_TIMEOUT(XSession::panel(), patienceMilliseconds);
        QCOMPARE(program.endWith(SIGTERM), 0);
    }

    void theShortcutMutes_data()
    {
        const Rows<QByteArray> row("waylandDisplay");
        row("an X11 session", {});
        row("a Wayland session without the portal", "wayland-none");
    }

    void theShortcutMutes()
    {
        QFETCH(const QByteArray, waylandDisplay);
        qputenv("WAYLAND_DISPLAY", waylandDisplay);
        const auto restore = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
        const DesktopHome home;
        XSession session;
        Program program;
        QTRY_VERIFY_WITH_TIMEOUT(home.voiceStatus().contains("\"muted\": false"),
                                 patienceMilliseconds);
        QVERIFY(XSession::waitForIcon());
        QVERIFY(waylandDisplay.isEmpty() || !program.waitForLine("M is not heard").isEmpty());
        const QString mute = u"super+shift+58"_s; // the key of the m in the first Latin layout
        XSession::useLayouts(u"ru,us,fr"_s);
        XSession::press(u"super+shift+47"_s); // an m only in a layout that does not count
        XSession::press(u"shift+58"_s);
        XSession::press(u"super+58"_s);
        XSession::press(mute);
        QTRY_VERIFY_WITH_TIMEOUT(home.voiceStatus().contains("\"muted\": true"),
                                 patienceMilliseconds);
        XSession::press(mute);
        QTRY_VERIFY_WITH_TIMEOUT(home.voiceStatus().contains("\"muted\": false"),
                                 patienceMilliseconds);
        QCOMPARE(program.endWith(SIGTERM), 0);
    }

    void chatsMutesAndQuits()
    {
        Desk desk;
        QVERIFY(desk.press(u"Skip"_s));
        QVERIFY(desk.press(u"Ask something…"_s));
        XSession::type(u"hello"_s);
        XSession::press(u"Return"_s);
        QTRY_VERIFY_WITH_TIMEOUT(desk.home.gateway.wasAsked(u"/v1/chat/completions"_s),
                                 patienceMilliseconds);
        QVERIFY(desk.press(u"Mute"_s));
        QTRY_VERIFY_WITH_TIMEOUT(desk.home.voiceStatus().contains("\"muted\": true"),
                                 patienceMilliseconds);
        const QImage picture(Desk::screenshot(u"ostrelle"_s)); // opaque, but for its corners
        QVERIFY(picture.pixel(4, 350) == 0xff0f0f1f && picture.pixel(0, 0) != 0xff0f0f1f);
        const QByteArray told = outputOf(u"xprop"_s, {u"-name"_s, u"Ostrelle"_s});
        QVERIFY(told.contains("_SKIP_TASKBAR, _NET_WM_STATE_SKIP_PAGER, _NET_WM_STATE_ABOVE"));
        for (const int side : {16, 18, 22, 24, 32, 36, 44, 48, 64}) {
            QVERIFY(told.contains("Icon (" + QByteArray::number(side) + " x "));
        }
        QVERIFY(desk.press(u"Quit"_s));
        QCOMPARE(desk.program->waitForEnd(), 0);
        QVERIFY(desk.home.voiceStatus().isEmpty());
    }

    void everyScaleShowsTheSame_data()
    {
        const Rows<qreal> row("scale");
        for (const qreal scale : {1.0, 1.25, 1.5, 2.0}) {
            row(QByteArray::number(scale).constData(), scale);
        }
    }

    void everyScaleShowsTheSame()
    {
        QFETCH(const qreal, scale);
        if (scale != 1 && m_atScaleOne.isEmpty()) {
            QSKIP("There are no pictures at scale 1 to compare with.");
        }
        Desk desk(scale);
        const auto showsTheSame = [&](const QString &name) {
            const QString file = scale == 1 ? name : u"%1@%2"_s.arg(name).arg(scale);
            QString &first = m_atScaleOne[name]; // of this run; there it is the one before
            const auto isSame = [&] {
                if (scale == 1) {
                    first = Desk::screenshot(name + u"-before"_s);
                }
                // A window that is not drawn yet is black.
                return !QImage(first).allGray() && difference(first, Desk::screenshot(file)) < 0.16;
            };
            return QTest::qWaitFor(isSame, patienceMilliseconds);
        };
        QVERIFY(showsTheSame(u"setup"_s));
        QVERIFY(desk.press(u"Skip"_s));
        const QList<std::pair<QString, QString>> tabs{{u"Ostrelle"_s, u"Mute"_s},
                                                      {u"Projects"_s, u"Project Board"_s},
                                                      {u"Agents"_s, u"Spinal Map"_s},
                                                      {u"Cron"_s, u"Scheduled Jobs"_s},
                                                      {u"Settings"_s, u"CONNECTED TO"_s}};
        for (const auto &[tab, heading] : tabs) {
            QVERIFY(desk.press(tab, u"page tab"_s));
            QVERIFY(desk.shows(heading));
            QVERIFY2(showsTheSame(tab.toLower()), qPrintable(tab));
        }
    }

    void theKeyboardReachesEverything_data()
    {
        const Rows<QStringList> row("opened");
        row("Setup", {});
        for (const QString &tab : {u"Ostrelle"_s, u"Projects"_s, u"Agents"_s, u"Cron"_s}) {
            row(qPrintable(tab), {u"Skip"_s, tab});
        }
        row("Settings", {u"Skip"_s, u"Settings"_s, u"Change Token"_s, u"ADVANCED"_s, u"PROFILES"_s,
                         u"Add Gateway Manually"_s});
    }

    void theKeyboardReachesEverything()
    {
        QFETCH(const QStringList, opened);
        Desk desk;
        for (const QString &name : opened) {
            QVERIFY(desk.press(name));
            QVERIFY(name != "Skip"_L1 || desk.shows(u"Mute"_s)); // the agent has started
        }
        QVERIFY(!opened.isEmpty() || desk.enter(u"Mac password"_s)); // in the setup
        XSession::type(u"x"_s); // what needs a text to be of use is enabled then
        const QStringList forwards = walk(desk, u"Tab"_s);
        QStringList backwards = walk(desk, u"shift+Tab"_s);
        std::ranges::reverse(backwards);
        QCOMPARE(backwards, forwards);
        for (const auto &control : desk.reader.controls()) {
            const QString said = control.role + u' ' + control.name;
            const bool isText = control.role == "label"_L1; // Qt says that they take the focus
            QVERIFY2(isText || !control.isFocusable() || forwards.contains(said), qPrintable(said));
        }
        for (const QString &announced : forwards) {
            QVERIFY2(!announced.startsWith(u' ') && !announced.endsWith(u' '),
                     qPrintable(announced));
        }
    }

    void followsALink()
    {
        Desk desk;
        QProcess &notifications = desk.bus.startNotificationDaemon();
        QVERIFY(desk.press(u"Skip"_s));
        QVERIFY(desk.press(u"Settings"_s, u"page tab"_s));
        const QString link = u"ostrelle://config?gatewayBaseURL=http://127.0.0.3:9"_s;
        QCOMPARE(Program({link}).waitForEnd(), 0);
        QVERIFY(desk.shows(u"http://127.0.0.3:9"_s));
        QCOMPARE(Program({u"ostrelle://config"_s}).waitForEnd(), 0);
        QByteArray shown;
        QTRY_COMPARE_WITH_TIMEOUT(
            (shown += notifications.readAll()).count("Gateway configured via QR code"), 2,
            patienceMilliseconds);
    }

    void pairsAPhoneAndKeepsTheSecret()
    {
        Desk desk;
        QVERIFY(desk.press(u"Skip"_s));
        QVERIFY(desk.press(u"Settings"_s, u"page tab"_s));
        QVERIFY(desk.press(u"Show QR to pair phone"_s));
        QVERIFY(desk.shows(u"QR code"_s));
        // It unfolds.
        QTRY_VERIFY_WITH_TIMEOUT(
            outputOf(u"zbarimg"_s, {u"--raw"_s, u"-q"_s, Desk::screenshot(u"qr"_s)})
                .startsWith("ostrelle://config?"),
            patienceMilliseconds);
        QVERIFY(desk.press(u"Show QR to pair phone"_s)); // makes room

        QVERIFY(desk.press(u"Change Token"_s));
        QVERIFY(desk.enter(u"Paste gateway token"_s));
        XSession::type(u"s3cret"_s);
        for (const auto &control : desk.reader.controls()) {
            QVERIFY(!desk.reader.text(control).contains("s3cret"_L1));
        }
        XSession::press(u"Return"_s);
        const QString url = desk.home.gateway.url();
        QTRY_COMPARE_WITH_TIMEOUT(desk.home.storedToken(url), u"s3cret"_s, patienceMilliseconds);
    }

private:
    // What a screen reader says on the way once around with that key, from where it first leads to.
    static QStringList walk(const Desk &desk, const QString &key)
    {
        QStringList said;
        QString first;
        QString here;
        while (said.size() < 60) {
            XSession::press(key);
            std::optional<AccessibilityBus::Control> control;
            const bool hasMoved = QTest::qWaitFor([&] {
                control = desk.reader.focused();
                return control && control->path != here;
            });
            if (!hasMoved) {
                return said << u"stays there"_s;
            }
            here = control->path;
            if (here == first) {
                return said;
            }
            first = first.isEmpty() ? here : first;
            said.append(control->role + u' ' + control->name);
        }
        return said;
    }

    // How much two pictures differ where they do so most, from 0 to 1; so small that only what is
    // as large as a symbol counts.
    static double difference(const QString &left, const QString &right)
    {
        const QString most = u"-resize 19x35! -alpha off -compose difference -composite -separate "
                             "-evaluate-sequence Add -format %[fx:maxima] info:"_s;
        bool isKnown = false;
        const double found =
            outputOf(u"convert"_s, QStringList{left, right} + most.split(u' ')).toDouble(&isKnown);
        return isKnown ? found : 1;
    }

    int m_failures = 0;
    QHash<QString, QString> m_atScaleOne; // the pictures' files of this run, by name
};

QTEST_GUILESS_MAIN(TestDesktop)
#include "test_desktop.moc"
