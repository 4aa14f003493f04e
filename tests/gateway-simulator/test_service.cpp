#include "support/ScratchHome.h"
#include "support/SimulatedGateway.h"

#include <QDir>
#include <QJsonDocument>
#include <QTcpSocket>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

namespace
{

constexpr int answerMilliseconds = 20'000;

QByteArray get(const QByteArray &path, const QByteArray &token)
{
    return "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1:1\r\nauthorization: Bearer " + token +
           "\r\n\r\n";
}

QByteArray chat(const QByteArray &token, const QByteArray &body)
{
    return "POST /v1/chat/completions HTTP/1.1\r\nAuthorization: Bearer " + token +
           "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

} // namespace

class TestService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        playSimulator(
            m_home, {{u"now"_s, qint64{1'770'000'000'000}}}); // a moment with heartbeats before it
        m_gateway.emplace(m_home);
    }

    void init() { playSimulator(m_home, {}); }

    void knowsItsClients_data()
    {
        QTest::addColumn<QByteArray>("request"); // TOKEN stands for the token
        QTest::addColumn<int>("status");
        const QByteArray question = R"({"messages":[{"role":"user","content":"hello"}]})";
        QTest::newRow("health without a token")
            << QByteArray("GET /health HTTP/1.0\r\n\r\n") << 200;
        QTest::newRow("query") << get("/health?x=1", {}) << 200;
        QTest::newRow("right token") << get("/v1/models", "TOKEN") << 200;
        QTest::newRow("wrong token") << get("/v1/models", "TOKENS") << 401;
        QTest::newRow("empty token") << get("/v1/models", {}) << 401;
        QTest::newRow("no header") << QByteArray("GET /v1/models HTTP/1.1\r\n\r\n") << 401;
        QTest::newRow("chat") << chat("TOKEN", question) << 200;
        QTest::newRow("chat with a wrong token") << chat("x", question) << 401;
        QTest::newRow("chat without a question") << chat("TOKEN", R"({"messages":[]})") << 400;
        QTest::newRow("chat without JSON") << chat("TOKEN", "hello") << 400;
        QTest::newRow("wrong method") << get("/v1/chat/completions", "TOKEN") << 405;
        QTest::newRow("unknown path") << get("/Health", {}) << 404;
        QTest::newRow("no HTTP") << QByteArray("hello\r\n\r\n") << 400;
        QTest::newRow("header without a colon") << QByteArray("GET / HTTP/1.1\r\nx\r\n\r\n") << 400;
        QTest::newRow("long head") << get("/" + QByteArray(20'000, 'x'), {}) << 431;
        QTest::newRow("long body")
            << QByteArray("POST / HTTP/1.1\r\nContent-Length: 1048577\r\n\r\n") << 413;
        QTest::newRow("length is no number")
            << QByteArray("POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n") << 400;
        QTest::newRow("chunked") << QByteArray(
                                        "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n")
                                 << 411;
    }

    void knowsItsClients()
    {
        QFETCH(QByteArray, request);
        QFETCH(int, status);
        const QByteArray reply = exchange(request.replace("TOKEN", m_gateway->token()));
        QVERIFY2(reply.startsWith("HTTP/1.1 " + QByteArray::number(status) + ' '), reply);
    }

    void readsARequestInPieces()
    {
        const QByteArray request =
            chat(m_gateway->token(), R"({"messages":[{"role":"user","content":"hello"}]})");
        for (qsizetype cut = 1; cut < request.size(); ++cut) {
            QTcpSocket socket;
            socket.connectToHost(u"127.0.0.1"_s, m_gateway->port());
            socket.write(request.first(cut));
            QVERIFY(socket.waitForBytesWritten());
            // The service has seen the first piece once it has answered somebody else.
            QVERIFY(!exchange(get("/health", {})).isEmpty());
            socket.write(request.sliced(cut));
            QVERIFY(bodyOf(rest(socket)).contains("hello"));
        }
    }

    void chatsAndRemembers()
    {
        const QByteArray reply = exchange(
            chat(m_gateway->token(), R"({"messages":[{"role":"system","content":"be brief"},)"
                                     R"({"role":"user","content":"💬 how many jobs?"}]})"));
        const QString content =
            QJsonDocument::fromJson(bodyOf(reply))["choices"_L1][0]["message"_L1]["content"_L1]
                .toString();
        QVERIFY2(content.startsWith(u"8 jobs"_s), qPrintable(content));
        const QString logs = u".duskrell/agents/main/sessions"_s;
        QByteArray log;
        for (const QString &name : QDir(m_home.path(logs)).entryList({u"*.jsonl"_s})) {
            log += m_home.read(logs + u'/' + name);
        }
        QVERIFY(log.contains("💬 how many jobs?") && log.contains(content.toUtf8()));
        QVERIFY(log.contains("Read HEARTBEAT.md if it exists") &&
                log.contains("{\"text\":\"HEARTBEAT_OK\""));
        for (const QByteArray &line : log.trimmed().split('\n')) {
            QVERIFY2(QJsonDocument::fromJson(line)["type"_L1].isString(), line);
        }
    }

    void misbehaves_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<int>("status");
        QTest::addColumn<qsizetype>("bodySize"); // -1: not looked at
        QTest::addColumn<QByteArray>("part");
        const QByteArray whole = R"({"ok":true,"status":"live"})";
        QTest::newRow("error") << u"error"_s << 500 << qsizetype{-1} << QByteArray();
        QTest::newRow("forbidden") << u"forbidden"_s << 403 << qsizetype{-1} << QByteArray();
        QTest::newRow("byte by byte") << u"trickle"_s << 200 << whole.size() << whole;
        QTest::newRow("closes halfway")
            << u"cut"_s << 200 << whole.size() / 2 << QByteArray(": 27\r");
        QTest::newRow("floods") << u"flood"_s << 200 << qsizetype{100'000'000} << QByteArray("xxx");
        QTest::newRow("endless headers")
            << u"endless-headers"_s << 200 << qsizetype{0} << QByteArray("X-Filler");
        QTest::newRow("wrong length")
            << u"wrong-length"_s << 200 << whole.size() << QByteArray(": 13\r");
        QTest::newRow("redirects") << u"redirect"_s << 302 << qsizetype{0}
                                   << QByteArray("\r\nLocation: http://localhost:1/health\r\n");
        QTest::newRow("nested") << u"deep"_s << 200 << qsizetype{200'000} << QByteArray(1000, '[');
        QTest::newRow("lone surrogates")
            << u"surrogates"_s << 200 << qsizetype{-1} << QByteArray("\\ud83d!");
        QTest::newRow("not UTF-8")
            << u"not-utf8"_s << 200 << qsizetype{-1} << QByteArray("\xff\xfe");
        QTest::newRow("no JSON") << u"garbage"_s << 200 << qsizetype{22} << QByteArray("<html>");
        QTest::newRow("empty") << u"empty"_s << 200 << qsizetype{0} << QByteArray();
        QTest::newRow("no choices") << u"no-choices"_s << 200 << qsizetype{14} << QByteArray("[]");
        QTest::newRow("unknown mode") << u"well"_s << 200 << whole.size() << whole;
    }

    void misbehaves()
    {
        QFETCH(QString, mode);
        QFETCH(int, status);
        QFETCH(qsizetype, bodySize);
        QFETCH(QByteArray, part);
        playSimulator(m_home, {{u"service"_s, QJsonObject{{u"/health"_s, mode}}}});
        const QByteArray reply = exchange(get("/health", {}));
        QVERIFY(reply.startsWith("HTTP/1.1 " + QByteArray::number(status) + ' '));
        QVERIFY(bodySize < 0 || bodyOf(reply).size() == bodySize);
        QVERIFY(reply.contains(part));
        QVERIFY(exchange(get("/none", {})).startsWith("HTTP/1.1 404 ")); // not affected
    }

    void staysSilent()
    {
        playSimulator(m_home, {{u"service"_s, u"silent"_s}, {u"record"_s, true}});
        const qsizetype before = m_gateway->recorded().size();
        QTcpSocket socket;
        socket.connectToHost(u"127.0.0.1"_s, m_gateway->port());
        socket.write(get("/health", {}));
        QTRY_COMPARE(m_gateway->recorded().size(), before + 1);
        QCOMPARE(m_gateway->recorded().last()["target"_L1], u"/health"_s);
        // The service is past this request once it has answered the next one.
        playSimulator(m_home, {});
        QVERIFY(exchange(get("/health", {})).startsWith("HTTP/1.1 200 "));
        QCOMPARE(socket.bytesAvailable(), 0);
        QCOMPARE(socket.state(), QAbstractSocket::ConnectedState);
    }

private:
    QByteArray exchange(const QByteArray &request) const
    {
        QTcpSocket socket;
        socket.connectToHost(u"127.0.0.1"_s, m_gateway->port());
        socket.write(request);
        return rest(socket);
    }

    static QByteArray rest(QTcpSocket &socket)
    {
        while (socket.state() != QAbstractSocket::UnconnectedState &&
               socket.waitForReadyRead(answerMilliseconds)) {
        }
        return socket.readAll();
    }

    static QByteArray bodyOf(const QByteArray &reply)
    {
        const qsizetype end = reply.indexOf("\r\n\r\n");
        return end < 0 ? QByteArray() : reply.sliced(end + 4);
    }

    const ScratchHome m_home;
    std::optional<SimulatedGateway> m_gateway;
};

QTEST_GUILESS_MAIN(TestService)
#include "test_service.moc"
