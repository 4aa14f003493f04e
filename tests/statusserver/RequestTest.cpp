#include "statusserver/RequestTest.h"

#include "statusserver/Request.h"

#include <QTest>

using namespace ostrelle;

void RequestTest::routing_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<Resource>("resource");
    QTest::addColumn<int>("limit");

    const auto row = [](const char *name, const QByteArray &request, Resource resource,
                        int limit = 0) { QTest::newRow(name) << request << resource << limit; };
    row("plain", "GET /status HTTP/1.1\r\nHost: a\r\n\r\n", Resource::AgentStatus);
    row("nothing after the target", "GET /tracker", Resource::Projects);
    row("method is not looked at", "DELETE /projects HTTP/1.1\r\n", Resource::Projects);
    row("blanks before and between", "  GET   /cron  HTTP/1.1\r\n", Resource::Cron);
    row("tab parts no words", "GET\t/cron HTTP/1.1\r\n", Resource::Unknown);
    row("method alone", "GET\r\n", Resource::AgentStatus);
    row("empty first line", "\r\nGET /cron HTTP/1.1\r\n", Resource::AgentStatus);
    row("bytes that are no UTF-8", "OPTIONS /\xff", Resource::AgentStatus);
    row("preflight of anything", "OPTIONS /nowhere HTTP/1.1\r\n\r\n", Resource::Preflight);
    row("preflight in lower case", "options /health HTTP/1.1\r\n", Resource::Health);
    row("other letter case", "GET /Status HTTP/1.1\r\n", Resource::Unknown);
    row("trailing slash", "GET /status/ HTTP/1.1\r\n", Resource::Unknown);
    row("empty path", "GET ?limit=5 HTTP/1.1\r\n", Resource::Unknown);
    row("query without limit", "GET /status?x=1 HTTP/1.1\r\n", Resource::AgentStatus);
    row("limit on status", "GET /status?limit=5 HTTP/1.1\r\n", Resource::History, 5);
    row("limit in another key", "GET /?mylimit=5 HTTP/1.1\r\n", Resource::History, 50);
    row("limit on a document", "GET /cron?limit=5 HTTP/1.1\r\n", Resource::Cron);
    row("no limit", "GET /history HTTP/1.1\r\n", Resource::History, 50);
    row("first limit wins", "GET /history?a=b&limit=7&limit=8 H\r\n", Resource::History, 7);
    row("first limit wins though bad", "GET /history?limit=&limit=8 H\r\n", Resource::History, 50);
    row("limit is a word", "GET /history?limit=abc H\r\n", Resource::History, 50);
    row("limit has a tail", "GET /history?limit=5?x H\r\n", Resource::History, 50);
    row("limit zero", "GET /history?limit=0 H\r\n", Resource::History, 0);
    row("limit with a sign", "GET /history?limit=+5 H\r\n", Resource::History, 5);
    row("two signs", "GET /history?limit=+-5 H\r\n", Resource::History, 50);
    row("limit below zero", "GET /history?limit=-1 H\r\n", Resource::History, 0);
    row("limit just too large", "GET /history?limit=201 H\r\n", Resource::History, 200);
    row("limit beyond 64 bits", "GET /history?limit=99999999999999999999 H\r\n", Resource::History,
        200);
}

void RequestTest::routing()
{
    QFETCH(const QByteArray, request);
    QFETCH(const Resource, resource);
    QFETCH(const int, limit);
    const Route found = route(parseRequest(request.toStdString()));
    QCOMPARE(found.resource, resource);
    QCOMPARE(found.limit, limit);
}

void RequestTest::token_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QByteArray>("offered");

    QTest::newRow("as usual") << QByteArray("Authorization: Bearer abc\r\n") << QByteArray("abc");
    QTest::newRow("name in any case")
        << QByteArray("aUTHORIZATION:Bearer abc") << QByteArray("abc");
    QTest::newRow("scheme in lower case")
        << QByteArray("Authorization: bearer abc") << QByteArray("Authorization: bearer abc");
    QTest::newRow("blanks around")
        << QByteArray("Authorization: Bearer \t abc\xc2\xa0 \r\nX: y") << QByteArray("abc");
    QTest::newRow("line break is no blank")
        << QByteArray("Authorization: Bearer abc\n") << QByteArray("abc\n");
    QTest::newRow("last piece counts")
        << QByteArray("Authorization: Bearer a Bearer b") << QByteArray("b");
    QTest::newRow("first line counts")
        << QByteArray("Authorization: Basic x\r\nAuthorization: Bearer b")
        << QByteArray("Authorization: Basic x");
    QTest::newRow("another header") << QByteArray("X-Authorization: Bearer a") << QByteArray();
    QTest::newRow("only blanks") << QByteArray("Authorization: Bearer  \t ") << QByteArray();
}

void RequestTest::token()
{
    QFETCH(const QByteArray, lines);
    QFETCH(const QByteArray, offered);
    const std::string text = "GET /history HTTP/1.1\r\n" + lines.toStdString();
    QCOMPARE(QByteArray::fromStdString(offeredToken(text)), offered);
}
