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
};

QTEST_GUILESS_MAIN(TestLink)
#include "test_link.moc"
