#include "statusserver/Request.h"
#include "support/Rows.h"

#include <QTest>

using namespace ostrelle;

class TestRequest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void routing_data()
    {
        const Rows<QByteArray, Resource, int> row("request", "resource", "limit");
        row("any method, nothing after the target", "DELETE /tracker", Resource::Projects, 0);
        row("blanks before and between", "  GET   /cron  HTTP/1.1\r\n", Resource::Cron, 0);
        row("tab parts no words", "GET\t/cron HTTP/1.1\r\n", Resource::Unknown, 0);
        row("empty first line", "\r\nGET /cron HTTP/1.1\r\n", Resource::AgentStatus, 0);
        row("preflight in lower case", "options /health HTTP/1.1\r\n", Resource::Health, 0);
        row("other letter case", "GET /Status HTTP/1.1\r\n", Resource::Unknown, 0);
        row("empty path", "GET ?limit=5 HTTP/1.1\r\n", Resource::Unknown, 0);
        row("query without limit", "GET /status?x=1 HTTP/1.1\r\n", Resource::AgentStatus, 0);
        row("limit on status", "GET /status?limit=5 HTTP/1.1\r\n", Resource::History, 5);
        row("limit in another key", "GET /?mylimit=5 HTTP/1.1\r\n", Resource::History, 50);
        row("limit on a document", "GET /cron?limit=5 HTTP/1.1\r\n", Resource::Cron, 0);
        row("first limit wins", "GET /history?a=b&limit=&limit=8 H\r\n", Resource::History, 50);
        row("limit with letters behind", "GET /history?limit=12abc H\r\n", Resource::History, 50);
        row("limit with a sign", "GET /history?limit=+5 H\r\n", Resource::History, 5);
        row("two signs", "GET /history?limit=+-5 H\r\n", Resource::History, 50);
        row("limit below zero", "GET /history?limit=-1 H\r\n", Resource::History, 0);
        row("limit just too large", "GET /history?limit=201 H\r\n", Resource::History, 200);
        row("limit beyond 64 bits", "GET /history?limit=99999999999999999999 H\r\n",
            Resource::History, 200);
    }

    void routing()
    {
        QFETCH(const QByteArray, request);
        const Route found = route(parseRequest(request.toStdString()));
        QTEST(found.resource, "resource");
        QTEST(found.limit, "limit");
    }

    void token_data()
    {
        const Rows<QByteArray, QByteArray> row("lines", "offered");
        row("name in any case", "aUTHORIZATION:Bearer abc", "abc");
        row("scheme in lower case", "Authorization: bearer abc", "Authorization: bearer abc");
        row("blanks around", "Authorization: Bearer \t abc\xc2\xa0 \r\nX: y", "abc");
        row("in the body", "X: y\r\n\r\nAuthorization: Bearer abc", QByteArray());
        row("last piece counts", "Authorization: Bearer a Bearer b", "b");
        row("first line counts", "Authorization:\r\nAuthorization: Bearer b", "Authorization:");
        row("another header", "X-Authorization: Bearer a", QByteArray());
        row("only blanks", "Authorization: Bearer  \t ", QByteArray());
    }

    void token()
    {
        QFETCH(const QByteArray, lines);
        const std::string text = "GET /history HTTP/1.1\r\n" + lines.toStdString();
        QTEST(QByteArray::fromStdString(offeredToken(text)), "offered");
    }
};

QTEST_GUILESS_MAIN(TestRequest)

#include "test_request.moc"
