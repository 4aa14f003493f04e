#include "control/ControlProtocol.h"
#include "support/Rows.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

using Kind = ControlProblem::Kind;

class TestProtocol : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refuses_data()
    {
        const Rows<QByteArray, Kind, QString> row("line", "kind", "text");
        row("no JSON", "{status", Kind::Request, u"no request"_s);
        row("no protocol", R"({"command":"status"})", Kind::Request, u"no request"_s);
        row("no command", R"({"protocol":1,"command":1})", Kind::Request, u"no command"_s);
        row("a newer client", R"({"protocol":2})", Kind::Protocol,
            u"Ostrelle 7 is older than this ostrellectl; restart"_s);
        row("an older client", R"({"protocol":0.5,"command":"status"})", Kind::Protocol,
            u"Ostrelle 7 is newer than this ostrellectl; update"_s);
    }

    void refuses()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, text);
        const auto request = readRequest(line, u"7"_s);
        QVERIFY(!request);
        QTEST(request.error().kind, "kind");
        QVERIFY2(request.error().text.contains(text), qPrintable(request.error().text));
    }
};

QTEST_GUILESS_MAIN(TestProtocol)
#include "test_protocol.moc"
