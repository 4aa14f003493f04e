#include "app/ConfigurationLink.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

using Text = std::optional<QString>;
Q_DECLARE_METATYPE(Text)

class TestLink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parses_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<Text>("base");
        QTest::addColumn<Text>("token");
        QTest::newRow("the other way round, with a stranger")
            << u"ostrelle://config?token=t&x=y&gatewayBaseURL=http://a:1"_s << Text(u"http://a:1"_s)
            << Text(u"t"_s);
        QTest::newRow("escaped token") << u"ostrelle://config?token=a%26b%3Dc%2Bd%25%23%20%C3%A9"_s
                                       << Text() << Text(u"a&b=c+d%# é"_s);
        QTest::newRow("a plus is a plus")
            << u"ostrelle://config?token=a+b"_s << Text() << Text(u"a+b"_s);
        QTest::newRow("the first of two counts")
            << u"ostrelle://config?token=1&token=2"_s << Text() << Text(u"1"_s);
        QTest::newRow("empty address")
            << u"ostrelle://config?gatewayBaseURL=&token=t"_s << Text() << Text(u"t"_s);
    }

    void parses()
    {
        QFETCH(QString, url);
        QFETCH(Text, base);
        QFETCH(Text, token);
        const auto link = ConfigurationLink::parse(url);
        QVERIFY(link);
        QCOMPARE(link->gatewayBaseURL, base);
        QCOMPARE(link->token, token);
    }

    void ignores()
    {
        for (const QString &url :
             {u"https://config?token=t"_s, u"ostrelle://other?token=t"_s, u"ostrelle://config"_s,
              u"ostrelle://config?gatewayBaseURL=&token="_s, u"ostrelle://config?a=b"_s,
              u"::::"_s}) {
            QCOMPARE(ConfigurationLink::parse(url), std::nullopt);
        }
    }

    void adopts_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isMagicDNS");
        QTest::newRow("tailnet name")
            << u"https://studio.quiet-otter.ts.net"_s << u"studio.quiet-otter.ts.net"_s << true;
        QTest::newRow("plain http in a tailnet")
            << u"http://studio.quiet-otter.ts.net"_s << u"studio.quiet-otter.ts.net"_s << false;
        QTest::newRow("bare address")
            << u"http://192.168.1.20:18789"_s << u"192.168.1.20"_s << false;
        QTest::newRow("no address at all") << u"somewhere"_s << u"somewhere"_s << false;
    }

    void adopts()
    {
        QFETCH(QString, base);
        QFETCH(QString, name);
        QFETCH(bool, isMagicDNS);
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.saved.reset();
        adoptGateway(config, base);
        const QList<SavedGateway> expected{{.name = name, .url = base, .isMagicDNS = isMagicDNS}};
        QCOMPARE(config.gateway.url, base);
        QCOMPARE(*config.gateway.saved, expected);
        // The same again replaces its own entry, in its place.
        config.gateway.saved->first().token = u"old"_s;
        config.gateway.saved->append({.name = u"other"_s, .url = u"http://other"_s});
        adoptGateway(config, base);
        QCOMPARE(config.gateway.saved->size(), 2);
        QCOMPARE(config.gateway.saved->first(), expected.first());
    }
};

QTEST_GUILESS_MAIN(TestLink)
#include "test_link.moc"
