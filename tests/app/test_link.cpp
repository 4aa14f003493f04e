#include "app/ConfigurationLink.h"
#include "support/Rows.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

using Text = std::optional<QString>;

class TestLink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parses_data()
    {
        const Rows<QString, Text, Text> row("url", "base", "token");
        row("the other way round, with a stranger",
            u"ostrelle://config?token=t&x=y&gatewayBaseURL=http://a:1"_s, u"http://a:1"_s, u"t"_s);
        row("escaped token", u"ostrelle://config?token=a%26b%3Dc%2Bd%25%23%20%C3%A9%EF%B7%A9"_s, {},
            u"a&b=c+d%# é\uFDE9"_s);
        row("a plus is a plus", u"ostrelle://config?token=a+b"_s, {}, u"a+b"_s);
        row("the first of two counts", u"ostrelle://config?token=1&token=2"_s, {}, u"1"_s);
        row("empty address", u"ostrelle://config?gatewayBaseURL=&token=t"_s, {}, u"t"_s);
    }

    void parses()
    {
        QFETCH(QString, url);
        const auto link = ConfigurationLink::parse(url);
        QVERIFY(link);
        QTEST(link->gatewayBaseURL, "base");
        QTEST(link->token, "token");
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
