#include "app/Program.h"
#include "core/OstrelleConfig.h"
#include "desktop/XSession.h"
#include "platform/Preferences.h"
#include "support/ScratchHome.h"
#include "support/SimulatedGateway.h"

#include <QDir>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <algorithm>
#include <csignal>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return probe.serverPort();
}

// A home whose gateway answers, with a demo voice agent that starts with the program.
class DesktopHome : public ScratchHome
{
public:
    DesktopHome()
    {
        playSimulator(*this, {{u"record"_s, true}});
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.url = gateway.url();
        config.gateway.saved = QList<SavedGateway>{{.name = u"Demo"_s, .url = gateway.url()}};
        config.ports.status = 0;
        config.ports.voiceAgent = voicePort;
        config.voice.enabled = true;
        config.save();
        QDir().mkpath(path(u".ostrelle/venv/bin"_s));
        QFile::link(u"/usr/bin/python3"_s, path(u".ostrelle/venv/bin/python"_s));
        QFile::link(QStringLiteral(DEMO_VOICE_AGENT), path(u".ostrelle/voice_agent.py"_s));
        Preferences().set(u"autoStartVoice"_s, true);
    }

    // What the voice agent says of itself; null while it does not answer.
    QByteArray voiceStatus() const
    {
        QTcpSocket client;
        client.connectToHost(QHostAddress::LocalHost, voicePort);
        client.write("GET /status HTTP/1.1\r\nConnection: close\r\n\r\n");
        QByteArray answer;
        while (client.waitForReadyRead(2000)) {
            answer += client.readAll();
            if (answer.contains('}')) {
                return answer;
            }
        }
        return {};
    }

    bool wasAsked(const QString &target) const
    {
        return std::ranges::any_of(gateway.recorded(), [&](const QJsonObject &request) {
            return request.value(u"target"_s) == target;
        });
    }

    const SimulatedGateway gateway{*this};
    const quint16 voicePort = freePort();
};

} // namespace

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
        XSession::click(XSession::icon()->center());
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

    void theShortcutMutes()
    {
        const DesktopHome home;
        XSession session;
        session.startTrayHost();
        Program program;
        QTRY_VERIFY_WITH_TIMEOUT(home.voiceStatus().contains("\"muted\": false"),
                                 patienceMilliseconds);
        QVERIFY(XSession::waitForIcon());
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

    void chatsAndQuits()
    {
        const DesktopHome home;
        XSession session;
        session.startTrayHost();
        Program program;
        QVERIFY(XSession::waitForIcon());
        XSession::click(XSession::icon()->center());
        QTRY_VERIFY_WITH_TIMEOUT(XSession::panel(), patienceMilliseconds);
        const QPoint corner = XSession::panel()->topLeft();
        // The setup sheet stands in front when something is missing; Escape closes the panel, Skip
        // the sheet. Where nothing is missing, nothing is there to be hit.
        const QPoint skip = corner + QPoint(178, 674);
        const QPoint quit = corner + QPoint(353, 677);
        const QPoint field = corner + QPoint(150, 360);
        XSession::click(skip);
        QTRY_VERIFY_WITH_TIMEOUT(
            [&] {
                XSession::click(field);
                XSession::type(u"hello"_s);
                XSession::press(u"Return"_s);
                return home.wasAsked(u"/v1/chat/completions"_s);
            }(),
            patienceMilliseconds);
        XSession::click(quit);
        QCOMPARE(program.waitForEnd(), 0);
        QVERIFY(home.voiceStatus().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDesktop)
#include "test_desktop.moc"
