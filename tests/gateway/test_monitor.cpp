#include "gateway/GatewayViewModel.h"
#include "gateway/Scripts.h"
#include "gateway/StandInGateway.h"
#include "settings/KeychainHelper.h"
#include "settings/OstrelleConfig.h"
#include "settings/Preferences.h"
#include "settings/SettingsQueues.h"
#include "support/PrintedLines.h"
#include "support/Rows.h"

#include <QSignalSpy>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QByteArray healthPath = "/health";
const QByteArray modelsPath = "/v1/models";
const QByteArray ok = StandInGateway::response(200, "{}");

} // namespace

class TestMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<ScratchHome>();
        scriptedDuskrell(*m_home);
        m_tailscale = scriptedTailscale(*m_home);
        m_gateway = std::make_unique<StandInGateway>();
        m_gateway->answer(healthPath, ok);
        m_gateway->answer(modelsPath, ok);
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.url = m_gateway->url();
        config.gateway.token = u"s3cret"_s;
        config.save();
    }

    void cleanup()
    {
        QVERIFY(finishBackgroundWork(10s));
        m_gateway.reset();
    }

    void anyWholeAnswerIsOnline()
    {
        m_gateway->answer(modelsPath, {});
        m_gateway->answer(healthPath, StandInGateway::response(500, "oops"));
        const auto monitor = makeMonitor(500ms, 20ms);
        QTRY_VERIFY(monitor->gatewayOnline());
        QCOMPARE(monitor->preferredURL(), m_gateway->url());
        m_gateway->answer(healthPath, ok.chopped(1));
        QTRY_VERIFY(!monitor->gatewayOnline());
    }

    void hungProbesHoldUpNoOtherGateway()
    {
        m_gateway->answer(healthPath, {});
        const auto monitor = makeMonitor();
        for (int i = 0; i < 50; ++i) {
            monitor->pollHealth();
        }
        QTRY_VERIFY(m_gateway->requests(healthPath).size() >= 24);
        StandInGateway other;
        other.answer(healthPath, ok);
        monitor->setGatewayURL(other.url());
        QTRY_COMPARE(m_gateway->clientCount(), 0);
        QCOMPARE(m_gateway->requests(healthPath).size(), 24);
        monitor->pollHealth();
        QTRY_VERIFY(monitor->gatewayOnline());
    }

    void hungProbesSayNothingOfAGatewayThatIsBack()
    {
        m_gateway->answer(healthPath, {});
        const auto monitor = makeMonitor(500ms);
        for (int i = 0; i < 10; ++i) {
            monitor->pollHealth();
        }
        QTRY_VERIFY(m_gateway->requests(healthPath).size() >= 10);
        m_gateway->answer(healthPath, ok);
        monitor->pollHealth();
        QTRY_VERIFY(monitor->gatewayOnline());
        QTRY_COMPARE(m_gateway->clientCount(), 0); // and with them the hung ones
        QVERIFY(monitor->gatewayOnline());
    }

    void tokenIsRejected()
    {
        const auto monitor = makeMonitor();
        QTRY_COMPARE(m_gateway->requestCount(), 2);
        QVERIFY(
            m_gateway->requests(modelsPath).first().contains("Authorization: Bearer s3cret\r\n"));
        QVERIFY(!m_gateway->requests(healthPath).first().contains("s3cret"));
        for (const auto &[status, rejected] :
             {std::pair(401, true), std::pair(404, false), std::pair(403, true)}) {
            m_gateway->answer(modelsPath, StandInGateway::response(status));
            monitor->pollHealth();
            QTRY_COMPARE(monitor->tokenRejected(), rejected);
        }
        m_gateway->answer(modelsPath, {});
        monitor->pollHealth();
        QTRY_COMPARE(m_gateway->requests(modelsPath).size(), 5);
        m_gateway->answer(modelsPath, ok);
        monitor->pollHealth();
        QTRY_VERIFY(!monitor->tokenRejected());
        m_gateway->answerHanging(StandInGateway::response(401)); // a later one has told more
        QTRY_COMPARE(m_gateway->clientCount(), 0);
        QVERIFY(!monitor->tokenRejected());
    }

    void tokenOfTheGatewayThatIsConfiguredMeanwhileStaysAway()
    {
        const auto monitor = makeMonitor();
        QTRY_COMPARE(m_gateway->requests(modelsPath).size(), 1);
        OstrelleConfig config = OstrelleConfig::load();
        config.gateway.url = u"http://other"_s;
        config.gateway.token = u"other's"_s;
        config.save();
        monitor->pollHealth();
        QVERIFY(finishBackgroundWork(10s));
        m_home->storeToken(u"own"_s, m_gateway->url());
        monitor->pollHealth();
        QTRY_COMPARE(m_gateway->requests(modelsPath).size(), 2);
        QVERIFY(m_gateway->requests(modelsPath).last().contains("Bearer own\r\n"));
    }

    void withoutATokenNobodyAsks()
    {
        OstrelleConfig config = OstrelleConfig::load();
        config.gateway.token.reset();
        config.save();
        m_gateway->answer(modelsPath, StandInGateway::response(401));
        const auto monitor = makeMonitor();
        QTRY_VERIFY(monitor->gatewayOnline());
        QVERIFY(finishBackgroundWork(10s)); // with it the first cycle's look for a token
        m_home->storeToken(u"stored"_s, m_gateway->url());
        monitor->pollHealth();
        QTRY_VERIFY(monitor->tokenRejected());
        QCOMPARE(m_gateway->requests(modelsPath).size(), 1);
    }

    void readsTailscale()
    {
        m_home->write(u"tailscale-ip"_s, "100.1.1.1\n");
        const auto monitor = makeMonitor();
        QTRY_VERIFY(monitor->tailscaleInstalled());
        QVERIFY(!monitor->isSecure());
        QCOMPARE(monitor->preferredURL(), u"http://100.1.1.1:18789"_s);
        QCOMPARE(calls(*m_home), (QByteArrayList{"tailscale serve status", "tailscale ip -4",
                                                 "tailscale status --json"}));

        m_home->write(u"tailscale-serve"_s, "https://x\n");
        monitor->pollHealth();
        QTRY_VERIFY(monitor->isSecure());
        QCOMPARE(monitor->tailscaleServeURL(), u"https://x"_s);
        m_home->write(u"tailscale-status"_s, R"({"Self":{"DNSName":"box.t.ts.net."}})");
        monitor->pollHealth();
        QTRY_COMPARE(monitor->preferredURL(), u"https://box.t.ts.net"_s);

        // The name is kept when the tool tells no more.
        m_home->write(u"tailscale-serve"_s, "");
        m_home->write(u"tailscale-status"_s, "");
        m_home->write(u"tailscale-ip"_s, "100.1.1.2");
        monitor->pollHealth();
        QTRY_COMPARE(monitor->tailscaleIP(), u"100.1.1.2"_s);
        QVERIFY(monitor->isSecure());
        QCOMPARE(monitor->preferredURL(), u"https://box.t.ts.net"_s);
        monitor->setUseMagicDNS(false);
        QCOMPARE(monitor->preferredURL(), u"http://100.1.1.2:18789"_s);
        settingsQueue().waitForDone();
        QVERIFY(!makeMonitor()->useMagicDNS());
    }

    void warnsUntilDismissed()
    {
        m_gateway->answer(healthPath, {});
        const auto monitor = makeMonitor();
        QTRY_VERIFY(monitor->tailscaleInstalled());
        QVERIFY(!monitor->showSecurityWarning()); // of a gateway that nobody reaches
        m_gateway->answer(healthPath, ok);
        m_home->write(u"tailscale-serve"_s, "https://x\n");
        monitor->pollHealth();
        QTRY_VERIFY(monitor->gatewayOnline() && monitor->isSecure());
        monitor->pollHealth();
        QTRY_COMPARE(calls(*m_home).size(), 9);
        QVERIFY(finishBackgroundWork(10s));
        QCoreApplication::processEvents();
        QVERIFY(!monitor->showSecurityWarning());
        m_home->write(u"tailscale-serve"_s, "");
        monitor->pollHealth();
        QTRY_VERIFY(monitor->showSecurityWarning());

        monitor->dismissSecurityWarning();
        QSignalSpy shown(monitor.get(), &GatewayViewModel::showSecurityWarningChanged);
        m_home->write(u"tailscale-ip"_s, "100.1.1.1");
        monitor->pollHealth();
        QTRY_VERIFY(!monitor->tailscaleIP().isEmpty());
        QVERIFY(shown.isEmpty() && !monitor->showSecurityWarning());
    }

    void hungToolHoldsUpAHandful()
    {
        m_home->write(u"hang"_s, "");
        const auto monitor = makeMonitor();
        for (int i = 0; i < 20; ++i) {
            monitor->pollHealth();
        }
        QTRY_COMPARE(calls(*m_home).size(), 4);
        QTRY_VERIFY(monitor->gatewayOnline());
        m_home->write(u"tailscale-ip"_s, "100.1.1.1");
        QFile::remove(m_home->path(u"hang"_s));
        QTRY_COMPARE(monitor->tailscaleIP(), u"100.1.1.1"_s);
        QTRY_COMPARE(calls(*m_home).size(), 12);
        monitor->pollHealth();
        QTRY_COMPARE(calls(*m_home).size(), 15); // neither the hung ones nor the refused ones count
    }

    void switchesToTailscaleServe_data()
    {
        const Rows<QByteArray, QString, int> row("failing", "error", "commands");
        row("no tool", "bin/duskrell", u"Failed to set gateway.bind: duskrell: not found"_s, 0);
        row("restart fails", "gateway restart", {}, 3);
        row("serve fails", "config set gateway.tailscale.mode serve",
            u"Failed to enable Tailscale: no way"_s, 2);
    }

    void switchesToTailscaleServe()
    {
        QFETCH(QByteArray, failing);
        QFETCH(QString, error);
        QFETCH(int, commands);
        m_home->write(u"fail"_s, failing);
        m_home->write(u"duskrell.err"_s, " no way \n");
        QFile::remove(m_home->path(QString::fromUtf8(failing))); // the tool itself, or nothing
        const auto monitor = makeMonitor();
        QTRY_COMPARE(calls(*m_home).size(), 3); // of the monitor's first cycle
        monitor->enableTailscaleServe();
        monitor->enableTailscaleServe();
        QVERIFY(monitor->isEnablingTailscale());
        QTRY_VERIFY(!monitor->isEnablingTailscale());
        QCOMPARE(monitor->enableTailscaleError(), error);
        QCOMPARE(monitor->securityWarningDismissed(), error.isEmpty());
        const QByteArrayList expected{"duskrell config set gateway.bind loopback",
                                      "duskrell config set gateway.tailscale.mode serve",
                                      "duskrell gateway restart"};
        QCOMPARE(calls(*m_home).sliced(3), expected.first(commands));
        monitor->enableTailscaleServe();
        QCOMPARE(monitor->enableTailscaleError(), QString());
    }

    void resetsTheToken_data()
    {
        // active: of the gateway in use, which is another one where the two are not the same
        const Rows<QByteArray, QByteArray, QString, QString, QByteArray> row("out", "err", "stored",
                                                                             "active", "failing");
        const QString before = u"old"_s;
        const QString made = u"new"_s;
        row("on standard output", " new\n", "note\n", made, made, {});
        row("on standard error", "\n", "new\n", made, made, {});
        row("another gateway in use meanwhile", "new\n", "", made, before, {});
        row("not UTF-8", "\xff", "", before, before, {});
        row("a banner before it", "Update available! new\n", "", before, before, {});
        row("a message", "", "Config key not found: gateway.auth.token\n", before, before, {});
        row("reset fails", "new", "", before, before, "gateway token --reset");
        row("look-up fails", "oops", "", before, before, "config get gateway.auth.token");
    }

    void resetsTheToken()
    {
        QFETCH(QByteArray, out);
        QFETCH(QByteArray, err);
        QFETCH(QByteArray, failing);
        QFETCH(QString, stored);
        QFETCH(QString, active);
        const PrintedLines printed;
        m_home->write(u"duskrell.out"_s, out);
        m_home->write(u"duskrell.err"_s, err);
        m_home->write(u"fail"_s, failing);
        m_home->storeToken(u"old"_s, KeychainHelper::activeKey);
        m_home->storeToken(u"old"_s, m_gateway->url());
        m_gateway->answer(modelsPath, StandInGateway::response(401));
        const auto monitor = makeMonitor();
        QTRY_VERIFY(monitor->tokenRejected());
        m_gateway->answer(modelsPath, {});
        monitor->pollHealth();
        QTRY_COMPARE(m_gateway->requests(modelsPath).size(), 2);

        {
            const BackgroundHold toolIsSlower;
            monitor->resetGatewayToken();
            QVERIFY(monitor->isResettingToken());
            OstrelleConfig config = OstrelleConfig::load();
            config.gateway.url = stored == active ? config.gateway.url : u"http://other"_s;
            config.save();
        }
        QTRY_VERIFY(!monitor->isResettingToken());
        m_gateway->answerHanging(StandInGateway::response(401)); // of the old token
        QTRY_COMPARE(m_gateway->requests(modelsPath).size(), 3);
        QTRY_COMPARE(m_gateway->clientCount(), 1); // with the new token, and without an answer
        QVERIFY(!monitor->tokenRejected() && monitor->tokenResetGateway() == m_gateway->url());
        QCOMPARE(m_home->storedToken(KeychainHelper::activeKey).value(), active);
        QCOMPARE(m_home->storedToken(m_gateway->url()).value(), stored);
        QCOMPARE(printed.text().contains("Token reset: the gateway "), stored != u"new"_s);
    }

    void opensTheLog()
    {
        const QString log = m_home->path(u"voice.log"_s);
        std::atomic<int> opened = 0;
        GatewaySurroundings around{.tailscale = m_tailscale, .pollInterval = 24h};
        around.voiceLog = log;
        around.openFile = [&](const QString &file) {
            opened += file == log && QFile::exists(file);
        };
        GatewayViewModel monitor(m_home->settings(), around);
        for (const auto &[times, content] : {std::pair(1, ""), {2, "line"}}) {
            monitor.openDebugLog(); // which makes it, and then keeps it
            QTRY_COMPARE(opened, times);
            QCOMPARE(m_home->read(u"voice.log"_s), content);
            m_home->write(u"voice.log"_s, "line");
        }
    }

private:
    // Cycles mostly start when a test says so.
    std::unique_ptr<GatewayViewModel>
    makeMonitor(std::chrono::milliseconds healthDeadline = 60s,
                std::chrono::milliseconds pollInterval = 24h) const
    {
        return std::make_unique<GatewayViewModel>(
            m_home->settings(), GatewaySurroundings{.tailscale = m_tailscale,
                                                    .pollInterval = pollInterval,
                                                    .healthDeadline = healthDeadline});
    }

    std::unique_ptr<ScratchHome> m_home; // one for each test
    TailscalePlaces m_tailscale;
    std::unique_ptr<StandInGateway> m_gateway;
};

QTEST_GUILESS_MAIN(TestMonitor)
#include "test_monitor.moc"
