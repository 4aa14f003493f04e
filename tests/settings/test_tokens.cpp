#include "settings/KeychainHelper.h"
#include "settings/OstrelleConfig.h"
#include "support/ScratchHome.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

const QString url = u"http://127.0.0.1:18789"_s;

} // namespace

class TestTokens : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        for (const QString &path : {u".ostrelle"_s, u".duskrell"_s}) {
            QDir(m_home.path(path)).removeRecursively();
        }
    }

    void resolvesTheFirstThatIsNotEmpty()
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        QCOMPARE(config.resolveToken(), u""_s);
        for (const char *content :
             {R"({"gateway":{"auth":{"token":"G"})", R"({"gateway":{"auth":{"token":5}}})"}) {
            m_home.write(u".duskrell/duskrell.json"_s, content);
            QCOMPARE(config.resolveToken(), u""_s);
        }
        m_home.write(u".duskrell/duskrell.json"_s, R"({"gateway":{"auth":{"token":"G"}}})");
        config.gateway.token = u""_s;
        QCOMPARE(config.resolveToken(), u"G"_s);
        config.gateway.token = u"C"_s;
        KeychainHelper::saveToken(u""_s, KeychainHelper::activeKey);
        QCOMPARE(config.resolveToken(), u"C"_s);
        KeychainHelper::saveToken(u"A"_s, KeychainHelper::activeKey);
        KeychainHelper::saveToken(u""_s, url);
        QCOMPARE(config.resolveToken(), u"A"_s);
        KeychainHelper::saveToken(u"U"_s, url);
        QCOMPARE(config.resolveToken(), u"U"_s);
    }

    void givesNoOtherGatewaysToken()
    {
        const QString other = u"http://other"_s;
        KeychainHelper::saveToken(u"A"_s, KeychainHelper::activeKey);
        QCOMPARE(OstrelleConfig::tokenFor(url), u"A"_s);
        QCOMPARE(OstrelleConfig::tokenFor(other), QString());
        KeychainHelper::saveToken(u"O"_s, other);
        QCOMPARE(OstrelleConfig::tokenFor(other), u"O"_s);
    }

    void movesTokensOutOfTheConfiguration()
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.token = u"abc"_s;
        config.gateway.saved->append({.name = u"n"_s, .url = u"http://n"_s, .token = u"def"_s});
        config.gateway.saved->append({.name = u"e"_s, .url = u"http://e"_s, .token = u""_s});
        // Somebody has changed the configuration since it was loaded; that must not be lost.
        OstrelleConfig changed = config;
        changed.gateway.url = u"http://changed"_s;
        changed.save();
        bool done = false;
        KeychainHelper::migrateFromConfig(config, this, [&] { done = true; });
        QVERIFY(!done);
        QTRY_VERIFY(done);
        QCOMPARE(OstrelleConfig::load().gateway.token, std::nullopt);
        const OstrelleConfig after = OstrelleConfig::load();
        QCOMPARE(after.gateway.url, u"http://changed"_s);
        QCOMPARE(after.gateway.saved->at(1).token, std::nullopt);
        QCOMPARE(after.gateway.saved->at(2).token, u""_s);
        QCOMPARE(KeychainHelper::getToken(url), u"abc"_s);
        QCOMPARE(KeychainHelper::getToken(KeychainHelper::activeKey), u"abc"_s);
        QCOMPARE(KeychainHelper::getToken(u"http://n"_s), u"def"_s);
        QCOMPARE(KeychainHelper::getToken(u"http://n/"_s), std::nullopt);
        QCOMPARE(KeychainHelper::getToken(u"http://e"_s), std::nullopt);
    }

    void leavesAFileAloneThatCannotBeRead()
    {
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.token = u"abc"_s;
        m_home.write(u".ostrelle/config.json"_s, "{");
        bool done = false;
        KeychainHelper::migrateFromConfig(config, this, [&] { done = true; });
        QTRY_VERIFY(done);
        QCOMPARE(KeychainHelper::getToken(url), u"abc"_s);
        QCOMPARE(m_home.read(u".ostrelle/config.json"_s), "{");
    }

private:
    ScratchHome m_home;
};

QTEST_GUILESS_MAIN(TestTokens)
#include "test_tokens.moc"
