#include "core/BackgroundWork.h"
#include "gateway/GatewayAddress.h"
#include "gateway/GatewayPairing.h"
#include "gateway/Scripts.h"
#include "settings/SettingsQueues.h"
#include "support/Processes.h"
#include "support/Rows.h"

#include <QSemaphore>
#include <QSignalSpy>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QString local = u"http://127.0.0.1:1"_s; // nobody answers there
const QString remote = u"https://far.t.ts.net"_s;

} // namespace

class TestProfiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<ScratchHome>();
        m_tailscale = scriptedTailscale(*m_home);
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway = {.url = local,
                          .saved = QList<SavedGateway>{{.name = u"Here"_s, .url = local},
                                                       {.name = u"Far"_s, .url = remote}}};
        config.save();
        m_settings = std::make_unique<Settings>(m_home->settings());
        m_gateway = std::make_unique<GatewayViewModel>(
            *m_settings, GatewaySurroundings{.tailscale = m_tailscale, .pollInterval = 24h});
        m_inUse = std::make_unique<GatewayInUse>(*m_settings, m_gateway.get());
        m_profiles = std::make_unique<GatewayProfiles>(*m_settings, m_gateway.get(), m_inUse.get());
        QCOMPARE(m_profiles->activeGatewayName(), u"Here"_s); // at once
        QTRY_VERIFY(m_profiles->isRead());
    }

    void cleanup()
    {
        settingsQueue().waitForDone();
        QVERIFY(finishBackgroundWork(10s));
        m_profiles.reset();
        m_inUse.reset();
        m_gateway.reset();
    }

    void namesGateways_data()
    {
        // name and isLocal: in use; profile: the name of one that is saved as known by its name
        const Rows<QString, QString, bool, QString> row("url", "name", "isLocal", "profile");
        row("local", local, u"box"_s, true, u"box"_s);
        row("by its name", u"https://box.t.ts.net/x"_s, u"box"_s, true, u"box"_s);
        row("saved", remote, u"Far"_s, false, u"far"_s);
        row("not saved", u"http://My.lan:1"_s, u"My"_s, false, u"My"_s);
        row("no URL", u"http://a b"_s, u"Gateway"_s, false, u"Odd"_s);
    }

    void namesGateways()
    {
        QFETCH(QString, url);
        OstrelleConfig::Gateway gateway = OstrelleConfig::load().gateway;
        gateway.url = url;
        const QString own = u"https://box.t.ts.net"_s;
        const GatewayNames names(gateway, own);
        QTEST(names.activeGatewayName(), "name");
        QTEST(names.isLocalGateway(), "isLocal");
        QCOMPARE(names.activeGatewayURL(), names.isLocalGateway() ? own : url);
        QCOMPARE(names.activeGatewaySaved().url, url);

        SavedGateway profile{.name = u"Odd.Name#2"_s, .url = url, .isMagicDNS = true};
        QTEST(names.profileDisplayName(profile), "profile");
        QCOMPARE(names.profileDisplayURL(profile), url);
        profile.isMagicDNS.reset();
        QCOMPARE(names.profileDisplayName(profile), url == local ? u"box"_s : u"Odd.Name#2"_s);
        QCOMPARE(names.profileDisplayURL(profile), url == local ? own : url);
        QCOMPARE(names.profileDisplayName({.name = u"ftp://a:b@c"_s, .url = own}), u"ftp://a@c"_s);
    }

    void adoptsPairedGateways_data()
    {
        const Rows<QString, QString, bool> row("base", "name", "isMagicDNS");
        row("tailnet name", u"https://studio.quiet-otter.ts.net"_s, u"studio.quiet-otter.ts.net"_s,
            true);
        row("plain http in a tailnet", u"http://studio.quiet-otter.ts.net"_s,
            u"studio.quiet-otter.ts.net"_s, false);
        row("no address at all", u"somewhere"_s, u"somewhere"_s, false);
    }

    void adoptsPairedGateways()
    {
        QFETCH(QString, base);
        QFETCH(QString, name);
        QFETCH(bool, isMagicDNS);
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.saved.reset();
        adoptGateway(config, base);
        QList<SavedGateway> expected{{.name = name, .url = base, .isMagicDNS = isMagicDNS}};
        QCOMPARE(config.gateway.url, base);
        QCOMPARE(*config.gateway.saved, expected);
        // The same again replaces its own entry, in its place.
        config.gateway.saved->first().name = u"old"_s;
        config.gateway.saved->first().token = expected.first().token = u"in no store yet"_s;
        config.gateway.saved->append({.name = u"other"_s, .url = u"http://other"_s});
        adoptGateway(config, base);
        QCOMPARE(config.gateway.saved->size(), 2);
        QCOMPARE(config.gateway.saved->first(), expected.first());
    }

    void linksTokenIsActiveOnlyOnceItsGatewayIsInUse()
    {
        m_home->storeToken(u"here"_s, KeychainHelper::activeKey);
        QSemaphore disk;
        tokenQueue().waitForDone();
        settingsQueue().start([&] { disk.acquire(); });
        bool done = false;
        m_inUse->adopt(remote, u"far"_s, [&] { done = true; });
        QTRY_COMPARE(m_home->storedToken(remote), u"far"_s);
        tokenQueue().waitForDone();
        QCOMPARE(m_home->storedToken(KeychainHelper::activeKey), u"here"_s);
        disk.release();
        QTRY_VERIFY(done);
        QCOMPARE(m_home->storedToken(KeychainHelper::activeKey), u"far"_s);
        QCOMPARE(m_gateway->gatewayURL(), remote);
        QTRY_COMPARE(calls(*m_home).size(), 6); // the monitor has looked at both
    }

    void lastOfTwoSwitchesWins()
    {
        m_profiles->setShowTokenField(true);
        m_profiles->requestSwitch(remote);
        m_profiles->confirmSwitch();
        m_profiles->switchGateway({.name = u"Here"_s, .url = u"http://127.0.0.1:2"_s});
        QTRY_COMPARE(m_gateway->gatewayURL(), u"http://127.0.0.1:2"_s);
        settingsQueue().waitForDone();
        QVERIFY(finishBackgroundWork(10s));
        QCOMPARE(m_gateway->gatewayURL(), OstrelleConfig::load().gateway.url);
        // What is pasted there is of the gateway before.
        QTRY_VERIFY(!m_profiles->showTokenField() && m_profiles->pendingSwitchGateway().isEmpty());
    }

    void tokenThatNoStoreTakesIsTriedAgain()
    {
        m_home->write(u".ostrelle/secrets.json/in-the-way"_s, "");
        m_settings->config->change([](OstrelleConfig &it) { it.gateway.token = u"old"_s; });
        settingsQueue().waitForDone();
        const GatewayInUse inUse(*m_settings, m_gateway.get(), 1ms);
        tokenQueue().waitForDone();
        QDir(m_home->path(u".ostrelle/secrets.json"_s)).removeRecursively();
        QTRY_COMPARE(m_home->storedToken(KeychainHelper::activeKey), u"old"_s);
    }

    void knowsAddresses_data()
    {
        const Rows<std::optional<AddressProblem>> row("problem");
        row("box:18789", {});
        row("HTTPS://box.t.ts.net:1/@x", {});
        row("http://[fd7a::1]:18789", {});
        row("http://LocalHost:1", {});
        row("http://me@box", AddressProblem::UserPart);
        row("http://@box", AddressProblem::UserPart);
        row("me:secret@box", AddressProblem::UserPart);
        row("http://me:an/?#@secret@box", AddressProblem::UserPart);
        row("http://[fd7a::1]/?token=secret#@", AddressProblem::Query);
        row("http://box\\@far", AddressProblem::Characters);
        row("http://box\r\nX: y", AddressProblem::Characters);
        row("http://box\u202e", AddressProblem::Characters);
        row("http://box\u2028", AddressProblem::Characters);
        row("javascript:x", AddressProblem::Scheme);
        row(" http://box", AddressProblem::Scheme);
        row("http:///x", AddressProblem::NoHost);
        row("https:box", AddressProblem::NoHost);
        row("http://127.0.0.1.far", AddressProblem::LooksLocal);
        row("http://far/?localhost", AddressProblem::LooksLocal);
    }

    void knowsAddresses()
    {
        QFETCH(const std::optional<AddressProblem>, problem);
        const QString address = QString::fromUtf8(QTest::currentDataTag());
        const auto acceptable = checkGatewayAddress(address);
        QCOMPARE(acceptable.has_value(), !problem);
        QVERIFY(acceptable || acceptable.error() == problem);
        QVERIFY(!(printableHost(address) + withoutPassword(address)).contains(u"secret"_s));
        QVERIFY(!printableHost(address).contains(QRegularExpression(u"[\\\\\r\n\u202e]"_s)));
        QVERIFY(!acceptable || withoutPassword(address) == address);

        m_profiles->setManualURL(address);
        m_profiles->addManualGateway();
        QCOMPARE(m_profiles->manualURL(), acceptable ? QString() : address);
        QCOMPARE(m_profiles->manualProblem().isEmpty(), acceptable.has_value());
        m_profiles->setManualURL(u"box"_s);
        QCOMPARE(m_profiles->manualProblem(), QString());
    }

    void tokenThatCannotBeStoredStaysInItsEditor()
    {
        m_home->write(u".ostrelle/secrets.json/in-the-way"_s, "");
        m_profiles->setShowTokenField(true);
        m_profiles->setTokenInput(u"of this one"_s);
        m_profiles->saveActiveToken(); // comes first
        m_profiles->setEditingProfileId(remote);
        m_profiles->setProfileTokenInput(u"typed"_s);
        m_profiles->saveProfileToken();
        const QString problem = u"Token not saved: the secret store refused"_s;
        QTRY_COMPARE(m_profiles->profileTokenProblem(), problem);
        QCOMPARE(m_profiles->tokenProblem(), problem);
        QCOMPARE(m_profiles->editingProfileId(), remote);
        QCOMPARE(m_profiles->profileTokenInput(), u"typed"_s);
        m_profiles->setProfileTokenInput(u"again"_s);
        QCOMPARE(m_profiles->profileTokenProblem(), QString());
        QDir(m_home->path(u".ostrelle/secrets.json"_s)).removeRecursively();
        m_profiles->saveProfileToken();
        QTRY_COMPARE(m_profiles->editingProfileId() + m_profiles->profileTokenInput(), QString());
        QCOMPARE(m_home->storedToken(remote), u"again"_s);
        m_profiles->setTokenInput(u"another"_s);
        QCOMPARE(m_profiles->tokenProblem(), QString());

        // What is typed while it is being saved stays.
        m_profiles->setEditingProfileId(remote);
        m_profiles->saveActiveToken();
        m_profiles->saveProfileToken();
        m_profiles->setTokenInput(u"since"_s);
        m_profiles->setProfileTokenInput(u"then"_s);
        const QSignalSpy saved(m_profiles.get(), &GatewayProfiles::tokensChanged);
        QTRY_COMPARE(saved.size(), 2);
        QCOMPARE(m_profiles->tokenInput() + m_profiles->profileTokenInput(), u"sincethen"_s);

        // What has been stored elsewhere is seen after a reset, however that ends, and a change.
        const auto far = m_profiles->saved()->index(1);
        m_gateway->resetGatewayToken();
        m_home->storeToken(u"elsewhere"_s, remote);
        QTRY_COMPARE(far.data(SavedGatewaysModel::TokenTailRole), u"here"_s);
        m_home->storeToken(u"since"_s, remote);
        m_profiles->addGateway({.name = u"New"_s, .url = u"http://new"_s});
        QTRY_COMPARE(far.data(SavedGatewaysModel::TokenTailRole), u"ince"_s);
    }

    void changeOfAFileThatCannotBeReadLosesNothing()
    {
        const QString config = u".ostrelle/config.json"_s;
        const QByteArray broken = m_home->read(config).chopped(9);
        m_home->write(config, broken);
        m_profiles->reload();
        m_profiles->addGateway({.name = u"Again"_s, .url = remote});
        settingsQueue().waitForDone();
        QCOMPARE(m_home->read(config), broken); // there was nothing to change

        m_profiles->addGateway({.name = u"Odd"_s, .url = u"http://far\\@new"_s});
        m_profiles->addGateway({.name = u"New"_s, .url = u"http://new"_s});
        settingsQueue().waitForDone();
        const auto gateway = OstrelleConfig::load().gateway;
        QCOMPARE(gateway.url, local);
        QCOMPARE(gateway.saved->size(), 3);
        QCOMPARE(gateway.saved->at(1).url + gateway.saved->at(2).url, remote + u"http://new"_s);
    }

    void findsTheAddressForAPhone()
    {
        const auto address = [this](const QString &url) {
            OstrelleConfig config;
            config.gateway.url = url;
            return preferredGatewayBaseURL(
                {.config = config, .useMagicDNS = false, .tailscale = m_tailscale});
        };
        QCOMPARE(address(remote), remote);
        const QString here = u"http://127.0.0.1:5/localhost"_s;
        const auto lan = NetworkHelpers::getLocalIP(); // this machine may be in none
        QCOMPARE(address(here), lan ? u"http://%1:5/%1"_s.arg(*lan) : here);
        m_home->write(u"tailscale-ip"_s, "100.101.102.103\n");
        QCOMPARE(address(u"http://127.0.0.1"_s), u"http://100.101.102.103:18789"_s);
    }

    void qrCodeHoldsTheLink()
    {
        GatewaySettings settings(m_settings->preferences);
        GatewayPairing pairing(m_gateway.get(), m_profiles.get(), &settings, m_tailscale);
        m_home->write(u"tailscale-ip"_s, "100.1.1.1");
        m_home->storeToken(u"a&b ü"_s, local);
        m_gateway->setUseMagicDNS(false);
        pairing.setShowQR(true);
        const QByteArray link = "ostrelle://config?gatewayBaseURL=http%3A%2F%2F100.1.1.1%3A1"
                                "&token=a%26b%20%C3%BC";
        QTRY_COMPARE(pairing.qrCode(), QrCode::encode(link).value());

        settings.setGeminiAPIKey(u"key"_s);
        QVERIFY(!pairing.qrCode().isEmpty()); // until there is another
        settings.setGeminiAPIKey(u"key2"_s);
        QTRY_COMPARE(pairing.qrCode(), QrCode::encode(link + "&geminiAPIKey=key2").value());
        settings.setGeminiAPIKey({});
        QTRY_COMPARE(pairing.qrCode(), QrCode::encode(link).value());
        m_profiles->setTokenInput(u"t2"_s);
        m_profiles->saveActiveToken();
        QByteArray now = link.first(link.indexOf("a%26b")) + "t2";
        QTRY_COMPARE(pairing.qrCode(), QrCode::encode(now).value());
        m_home->write(u"tailscale-ip"_s, "100.1.1.2");
        m_gateway->pollHealth();
        now.replace("100.1.1.1", "100.1.1.2");
        QTRY_COMPARE(pairing.qrCode(), QrCode::encode(now).value());
        m_home->write(u"tailscale-status"_s, R"({"Self":{"DNSName":"old.t.ts.net."}})");
        m_gateway->setUseMagicDNS(true);
        now.replace("http%3A%2F%2F100.1.1.2%3A1", "https%3A%2F%2Fold.t.ts.net");
        QTRY_COMPARE(pairing.qrCode(), QrCode::encode(now).value());
        m_home->write(u"tailscale-status"_s, R"({"Self":{"DNSName":"box.t.ts.net."}})");
        m_gateway->pollHealth();
        now.replace("old.t", "box.t");
        QTRY_COMPARE(pairing.qrCode(), QrCode::encode(now).value());
        QCOMPARE(m_profiles->activeGatewayURL(), u"https://box.t.ts.net"_s);
        QCOMPARE(m_profiles->saved()->index(0).data(SavedGatewaysModel::NameRole), u"box"_s);
        const QSignalSpy changed(&pairing, &GatewayPairing::qrCodeChanged);
        const QString own = u"https://box.t.ts.net/x"_s;
        m_profiles->switchGateway({.name = u"Own"_s, .url = own});
        now.replace("ts.net", "ts.net%2Fx");
        QTRY_COMPARE(pairing.qrCode(), QrCode::encode(now).value());
        QCOMPARE(m_settings->tokens->tokenFor(own), u"t2"_s);
        QVERIFY(changed.size() > 1); // it was hidden: nobody scans the one before meanwhile
        pairing.setShowQR(false);
        QVERIFY(pairing.qrCode().isEmpty());
        QVERIFY(!QrCode::encode(QByteArray(4000, 'x')));
        QVERIFY(!QrCode::encode({}));
    }

private:
    std::unique_ptr<ScratchHome> m_home; // one for each test
    TailscalePlaces m_tailscale;
    std::unique_ptr<Settings> m_settings;
    std::unique_ptr<GatewayViewModel> m_gateway;
    std::unique_ptr<GatewayInUse> m_inUse;
    std::unique_ptr<GatewayProfiles> m_profiles;
};

QTEST_GUILESS_MAIN(TestProfiles)
#include "test_profiles.moc"
