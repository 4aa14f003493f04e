#include "settings/OwnMachine.h"
#include "settings/SettingsQueues.h"
#include "support/PrintedLines.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QNetworkInterface>
#include <QTest>

#include <functional>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString local = u"http://127.0.0.1:18789"_s;
const QString far = u"https://far.t.ts.net"_s;

// Locked until somebody is asked, during which anything may happen.
class LockedStore final : public SecretStore
{
public:
    std::expected<std::optional<QByteArray>, SecretProblem> read(const QString & /*name*/) override
    {
        return secret;
    }
    std::expected<void, SecretProblem> write(const QString & /*name*/,
                                             const QByteArray &to) override
    {
        if (isLocked) {
            return std::unexpected(SecretProblem::Locked);
        }
        secret = to;
        return {};
    }
    void unlockForUser() override
    {
        isLocked = false;
        meanwhile();
    }

    bool isLocked = true;
    std::function<void()> meanwhile;
    std::optional<QByteArray> secret;
};

} // namespace

class TestTokens : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<ScratchHome>();
        const Settings settings = m_home->settings();
        m_config = settings.config;
        m_tokens = settings.tokens;
    }

    void resolvesTheFirstThatIsNotEmpty()
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        QCOMPARE(config.resolveToken(*m_tokens), u""_s);
        const QByteArray known = R"({"gateway":{"auth":{"token":"G"}}})";
        for (const QByteArray &content : {known.chopped(1), QByteArray(known).replace("\"G\"", "5"),
                                          QByteArray(17'000'000, ' ') + known}) {
            m_home->write(u".duskrell/duskrell.json"_s, content);
            QCOMPARE(config.resolveToken(*m_tokens), u""_s);
        }
        m_home->write(u".duskrell/duskrell.json"_s, known);
        config.gateway.token = u""_s;
        QCOMPARE(config.resolveToken(*m_tokens), u"G"_s);
        config.gateway.token = u"C"_s;
        save(u""_s, KeychainHelper::activeKey);
        QCOMPARE(config.resolveToken(*m_tokens), u"C"_s);
        save(u"A"_s, KeychainHelper::activeKey);
        save(u""_s, local);
        QCOMPARE(config.resolveToken(*m_tokens), u"A"_s);
        save(u"U"_s, local);
        QCOMPARE(config.resolveToken(*m_tokens), u"U"_s);
    }

    void knowsWhenItDoesNotKnow()
    {
        const OstrelleConfig config = OstrelleConfig::defaults();
        QCOMPARE(m_tokens->resolve(config).value(), u""_s);
        setStoreRefuses(true);
        QVERIFY(!m_tokens->resolve(config));
        m_home->write(u".duskrell/duskrell.json"_s, R"({"gateway":{"auth":{"token":"G"}}})");
        QCOMPARE(m_tokens->resolve(config).value(), u"G"_s);
    }

    void sendsOtherMachinesOnlyTheirOwn()
    {
        m_home->write(u".duskrell/duskrell.json"_s, R"({"gateway":{"auth":{"token":"G"}}})");
        QCOMPARE(m_tokens->tokenFor(local), u"G"_s);
        save(u"A"_s, KeychainHelper::activeKey);
        QCOMPARE(m_tokens->tokenFor(local), u"A"_s);
        QCOMPARE(m_tokens->tokenFor(far), QString());
        use(far);
        QCOMPARE(m_tokens->tokenFor(far), QString());
        QCOMPARE(m_tokens->tokenFor(local), QString()); // not in use any more
        m_tokens->setMagicDNSName(u"FAR.t.ts.net."_s);
        QCOMPARE(m_tokens->tokenFor(far), u"A"_s);
        m_tokens->setMagicDNSName(u"near.t.ts.net"_s);
        save(u"F"_s, far);
        QCOMPARE(m_tokens->tokenFor(far), u"F"_s);
    }

    void knowsThisMachine_data()
    {
        const Rows<QString, bool> row("url", "isThis");
        for (const QHostAddress &address : QNetworkInterface::allAddresses()) {
            QUrl url(u"http://x:1"_s);
            url.setHost(address.toString());
            row(qPrintable(address.toString()), url.toString(), true);
        }
        row("loopback", u"https://127.9.9.9"_s, true);
        row("localhost", u"http://LocalHost:5"_s, true);
        row("no host", u"127.0.0.1"_s, false);
        row("user part", u"http://127.0.0.1@far"_s, false);
        row("longer name", u"http://localhost.far"_s, false);
        row("elsewhere", u"http://203.0.113.5"_s, false);
    }

    void knowsThisMachine()
    {
        QFETCH(QString, url);
        QTEST(isThisMachine(url, {}), "isThis");
    }

    void savesTheActiveTokenOnlyForTheGatewayInUse()
    {
        m_config->change([](auto &config) { config.gateway.token = u"old"_s; }).waitForFinished();
        QVERIFY(m_tokens->saveForUser(far, u"F"_s).result());
        QCOMPARE(m_tokens->getToken(KeychainHelper::activeKey), std::nullopt);
        QVERIFY(m_config->change([](auto &) {}).result().config.holdsTokens()); // another one's
        m_tokens->activate(far).waitForFinished();
        QCOMPARE(m_tokens->getToken(KeychainHelper::activeKey), std::nullopt);
        QVERIFY(m_tokens->saveForUser(local, u"L"_s).result());
        QCOMPARE(m_tokens->getToken(KeychainHelper::activeKey), u"L"_s);
        use(far);
        QVERIFY(!m_config->current().holdsTokens()); // the older one
        m_tokens->activate(far).waitForFinished();
        QCOMPARE(m_tokens->getToken(KeychainHelper::activeKey), u"F"_s);
        QCOMPARE(m_tokens->getToken(local), u"L"_s);
    }

    void aLaterTokenStays()
    {
        const auto store = std::make_shared<LockedStore>();
        const auto tokens = std::make_shared<Tokens>(store, m_config);
        store->meanwhile = [&] { tokens->saveForUser(far, u"later"_s).waitForFinished(); };
        tokens->saveForUser(far, u"first"_s).waitForFinished();
        QCOMPARE(store->secret, "later");
    }

    void movesTokensOutOfTheConfiguration()
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.token = u"abc"_s;
        config.gateway.saved->append({.name = u"n"_s, .url = u"http://n"_s, .token = u"def"_s});
        config.gateway.saved->append({.name = u"e"_s, .url = u"http://e"_s, .token = u""_s});
        config.save();
        m_config->snapshot();
        // Somebody changes the file meanwhile; that must not be lost.
        OstrelleConfig changed = config;
        changed.ports.status = 7;
        changed.gateway.saved->first().token = u"new"_s;
        changed.save();
        const PrintedLines printed;
        QVERIFY(!m_tokens->migrateFromConfig().result());
        settingsQueue().waitForDone();
        QVERIFY(printed.text().endsWith("[Ostrelle] Migrated tokens to Keychain\n"));
        const OstrelleConfig after = OstrelleConfig::load();
        QCOMPARE(after.gateway.token, std::nullopt);
        QCOMPARE(after.ports.status, 7);
        QCOMPARE(after.gateway.saved->at(0).token, u"new"_s);
        QCOMPARE(after.gateway.saved->at(1).token, std::nullopt);
        QCOMPARE(after.gateway.saved->at(2).token, u""_s);
        QCOMPARE(m_tokens->getToken(local), u"abc"_s);
        QCOMPARE(m_tokens->getToken(KeychainHelper::activeKey), u"abc"_s);
        QCOMPARE(m_tokens->getToken(u"http://n"_s), u"def"_s);
        QCOMPARE(m_tokens->getToken(u"http://e"_s), std::nullopt);
    }

    void leavesInTheFileWhatNoStoreTakes()
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.token = u"old"_s;
        config.save();
        m_config->snapshot();
        QVERIFY(!m_tokens->getToken(local)); // and with it the line that says where they are kept
        setStoreRefuses(true);
        const PrintedLines printed;
        for (int i = 0; i < 2; ++i) {
            QVERIFY(m_tokens->migrateFromConfig().result());
            QCOMPARE(printed.text(), "[Ostrelle] Token not saved: the secret store refused\n");
        }
        QCOMPARE(OstrelleConfig::load(), config);
        QVERIFY(!m_tokens->saveForUser(local, u"newer"_s).result());
        use(far); // the token stays with its gateway
        QCOMPARE(OstrelleConfig::load().gateway.saved->first().token, u"old"_s);
        setStoreRefuses(false);
        QVERIFY(m_tokens->saveForUser(local, u"newer"_s).result());
        settingsQueue().waitForDone();
        QVERIFY(!OstrelleConfig::load().holdsTokens()); // for the next start to bring back
        QVERIFY(!m_tokens->migrateFromConfig().result());
        QCOMPARE(m_tokens->getToken(local), u"newer"_s);
    }

    void leavesAFileAloneThatCannotBeRead()
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.token = u"abc"_s;
        config.save();
        m_config->snapshot();
        m_home->write(u".ostrelle/config.json"_s, "{");
        QVERIFY(!m_tokens->migrateFromConfig().result());
        QCOMPARE(m_tokens->getToken(local), u"abc"_s);
        QCOMPARE(m_home->read(u".ostrelle/config.json"_s), "{");
        settingsQueue().waitForDone();
        QVERIFY(!m_config->current().holdsTokens()); // and never writes it back
    }

private:
    void save(const QString &token, const QString &key) { m_home->storeToken(token, key); }

    // Where a folder stands, no file can be read or written.
    void setStoreRefuses(bool refuses)
    {
        const QString file = m_home->path(u".ostrelle/secrets.json"_s);
        if (refuses) {
            QFile::rename(file, file + u".aside"_s);
            QVERIFY(QDir().mkpath(file));
        } else {
            QVERIFY(QDir().rmdir(file));
            QFile::rename(file + u".aside"_s, file);
        }
    }

    void use(const QString &url)
    {
        m_config->change([url](OstrelleConfig &config) { config.useGateway(url); })
            .waitForFinished();
    }

    std::unique_ptr<ScratchHome> m_home; // one for each test
    std::shared_ptr<ConfigStore> m_config;
    std::shared_ptr<Tokens> m_tokens;
};

QTEST_GUILESS_MAIN(TestTokens)
#include "test_tokens.moc"
