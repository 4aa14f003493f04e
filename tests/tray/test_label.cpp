#include "gateway/GatewayViewModel.h"
#include "gateway/StandInGateway.h"
#include "statusserver/StatusServer.h"
#include "support/BusStandIn.h"
#include "support/PrivateSession.h"
#include "support/ScratchHome.h"
#include "tray/MenuBarLabel.h"
#include "tray/TrayHostWatcher.h"
#include "voice/VoiceViewModel.h"

#include <QApplication>
#include <QDBusVariant>
#include <QMenu>
#include <QTest>

#include <algorithm>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

// The texts of what can be chosen now, and the line between.
QString menu()
{
    const auto widgets = QApplication::topLevelWidgets();
    const auto isMenu = [](QWidget *widget) { return qobject_cast<QMenu *>(widget) != nullptr; };
    const auto menu = std::ranges::find_if(widgets, isMenu);
    QStringList texts;
    for (const QAction *action : menu == widgets.end() ? QList<QAction *>() : (*menu)->actions()) {
        texts << (action->isEnabled() ? action->text() : u'(' + action->text() + u')');
    }
    return texts.join(u'|');
}

} // namespace

class TestLabel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheHostsOnTheBus()
    {
        const ScratchHome home;
        const QString service = u"org.kde.StatusNotifierWatcher"_s;
        const QString path = u"/StatusNotifierWatcher"_s;
        const auto answer = [](bool is) { return QVariant::fromValue(QDBusVariant(is)); };
        PrivateSession session;
        const TrayHostWatcher hosts;
        {
            BusStandIn list(service, path, answer(false)); // comes later
            for (const auto &what : {u"Registered"_s, u"Unregistered"_s, u"Registered"_s}) {
                const bool hasHost = what == "Registered"_L1;
                list.setAnswer(answer(hasHost));
                list.send(
                    QDBusMessage::createSignal(path, service, u"StatusNotifierHost"_s + what));
                QTRY_COMPARE(hosts.hostPresent(), hasHost);
            }
        }
        QTRY_VERIFY(!hosts.hostPresent());
        const BusStandIn again(service, path, answer(true));
        QTRY_VERIFY(hosts.hostPresent());
        session.endBus();
        QTRY_VERIFY(!hosts.hostPresent());
    }

    void menuFollowsTheVoiceAgent()
    {
        const ScratchHome home;
        StandInGateway agent;
        const auto says = [&](const QByteArray &status) {
            agent.answer("/status", StandInGateway::response(200, status));
        };
        GatewayViewModel gateway(home.settings(), {.tailscale = {}, .pollInterval = 20ms});
        VoiceViewModel voice(nullptr, agent.serverPort(), {.interval = 20ms});
        QTcpServer stranger;
        QVERIFY(stranger.listen(QHostAddress::AnyIPv4));
        OstrelleConfig config = OstrelleConfig::defaults();
        config.ports.status = stranger.serverPort();
        StatusServer server(config, home.settings().tokens);
        MenuBarLabel label(&gateway, &voice, &server);
        label.show();
        const QString all = u"Open Ostrelle||(Gateway %1)|%2||Quit"_s;
        QCOMPARE(menu(), all.arg(u"offline, voice: Offline"_s, u"(Mute)"_s));
        agent.answer("/health", StandInGateway::response(200));
        gateway.setGatewayURL(agent.url());
        QTRY_COMPARE(menu(), all.arg(u"online, voice: Offline"_s, u"(Mute)"_s));
        says(R"({"state":"R&D"})");
        QTRY_COMPARE(menu(), all.arg(u"online, voice: R&&D"_s, u"Mute"_s));
        says(R"({"state":"R&D","muted":true})");
        QTRY_COMPARE(menu(), all.arg(u"online, voice: Muted"_s, u"Unmute"_s));
        agent.close();
        QTRY_COMPARE(menu(), all.arg(u"offline, voice: Offline"_s, u"(Mute)"_s));
        server.start();
        const QString waits = u"offline, voice: Offline, status: waits for its port"_s;
        QTRY_COMPARE(menu(), all.arg(waits, u"(Mute)"_s));
        label.hide(); // as between the end of a session bus and the next tray
        QCOMPARE(menu(), QString());
        server.stop();
        label.show();
        QCOMPARE(menu(), all.arg(u"offline, voice: Offline"_s, u"(Mute)"_s));
    }
};

QTEST_MAIN(TestLabel)
#include "test_label.moc"
