#include "core/HttpClient.h"
#include "gateway/StandInGateway.h"
#include "support/Processes.h"
#include "support/Rows.h"

#include <QFile>
#include <QNetworkProxy>
#include <QScopeGuard>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using State = HttpResponseReader::State;

class TestHttp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsResponsesCutAnywhere_data()
    {
        const Rows<QByteArray, int, QByteArray> whole("response", "status", "body");
        const auto malformed = [&](const char *name, const QByteArray &response) {
            whole(name, response, 0, {});
        };
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        const QByteArray chunked = ok + "Transfer-Encoding: Chunked\r\n\r\n";
        whole("bare line feeds", "HTTP/1.0 200 OK\ncontent-length:  000000000000002 \n\nab", 200,
              "ab");
        whole("chunks of many lines",
              chunked + ("1;" + QByteArray(4096, 'x') + "\r\na\r\n").repeated(20) + "0\r\n\r\n",
              200, QByteArray(20, 'a'));
        whole("no reason", "HTTP/1.1 204\r\nContent-Length: 5\r\n\r\n", 204, "");
        whole("chunks", chunked + "3;x=y\r\nabc\r\n0A\r\n0123456789\r\n0\r\nT: t\r\n\r\n", 200,
              "abc0123456789");
        whole("after an interim response",
              "HTTP/1.1 100 Continue\r\nContent-Length: 9\r\n"
              "Transfer-Encoding: chunked\r\n\r\nHTTP/1.1 500 X\r\n\r\nx",
              500, "x");
        whole("up to the end", ok + "X:\r\n\r\nab\n", 200, "ab\n");
        whole("longer than wanted", StandInGateway::response(200, QByteArray(30, 'y')), 200,
              QByteArray(20, 'y'));
        malformed("not HTTP", "SSH-2.0-x200\r\n\r\n" + ok + "\r\n");
        malformed("status below all", "HTTP/1.1 099 X\r\n\r\n" + ok + "\r\n");
        malformed("header without a colon", ok + "abc\r\n" + ok + "\r\n");
        malformed("header without a name", ok + ": x\r\n\r\n");
        malformed("negative length", chunked + "-1\r\n\r\n0\r\n\r\n");
        malformed("length beyond reason", ok + "Content-Length: 99999999999999999999\r\n\r\n");
        malformed("chunk without a size", chunked + "\r\n" + ok + "\r\n");
        malformed("chunk longer than its size", chunked + "1\r\nab\r\n" + ok + "\r\n");
        malformed("cut", StandInGateway::response(200, "body").chopped(1));
        malformed("head beyond reason", ok + QByteArray("X: y\r\n").repeated(11000));
    }

    void readsResponsesCutAnywhere()
    {
        QFETCH(QByteArray, response);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        const qsizetype step = 1 + response.size() / 1000 * 100; // a long one is cut at few places
        for (qsizetype cut = 0; cut < response.size(); cut += step) {
            HttpResponseReader reader(20);
            State state = reader.feed(response.first(cut));
            if (state == State::Reading) {
                state = reader.feed(response.sliced(cut));
            }
            if (state == State::Reading && response.size() < 60'000) { // a long one needs no end
                state = reader.close();
            }
            QCOMPARE(state, status == 0 ? State::Malformed : State::Complete);
            if (status != 0) {
                QCOMPARE(reader.answer().status, status);
                QCOMPARE(reader.answer().body, body);
                QCOMPARE(reader.answer().complete, !body.contains('y'));
            }
        }
    }

    void followsRedirectsWithinTheOrigin()
    {
        StandInGateway gateway;
        gateway.answer("/b?c=d", "HTTP/1.0 200 OK\r\nLocation: /\r\n\r\nthere");
        const QByteArray head = " /b?c=d HTTP/1.1\r\nHost: " + gateway.url().mid(7).toLatin1() +
                                "\r\nUser-Agent: Ostrelle\r\nAccept: */*\r\n"
                                "Connection: close\r\nAuthorization: t\r\n";
        for (const int status : {301, 302, 303, 307, 308}) {
            gateway.answer("/a", StandInGateway::response(status, {}, "Location: b?c=d\r\n"));
            QCOMPARE(ask(gateway.url().insert(7, u"me@"_s) + u"/a"_s, "posted")->body, "there");
            QCOMPARE(gateway.requests("/b?c=d").last(),
                     status < 304 ? "GET" + head + "\r\n"
                                  : "POST" + head + "Content-Length: 6\r\n\r\nposted");
        }

        gateway.answer("/a", StandInGateway::redirectTo(u"/a"_s));
        QCOMPARE(ask(gateway.url() + u"/a"_s)->status, 307);
        QCOMPARE(gateway.requests("/a").size(), 5 + 6);
        gateway.answer("/a", StandInGateway::redirectTo(u"https://127.0.0.1/b"_s));
        QCOMPARE(ask(gateway.url() + u"/a"_s)->status, 307);
        const StandInGateway other;
        gateway.answer("/a", StandInGateway::redirectTo(other.url() + u"/a"_s));
        QCOMPARE(ask(gateway.url() + u"/a"_s)->status, 307);
        QCOMPARE(other.requestCount(), 0); // it would get to see the token
        if (::geteuid() == 0) {            // who may have that port
            const StandInGateway usual(QHostAddress::LocalHost, 80);
            QCOMPARE(ask(u"http://127.0.0.1/"_s)->status, 404);
        }
    }

    void trustsWhomTheSystemTrusts_data()
    {
        const Rows<bool, QString, bool> row("known", "name", "trusted");

        row("known authority", true, u"IP:127.0.0.1"_s, true);
        row("unknown authority", false, u"IP:127.0.0.1"_s, false);
        row("somebody else's name", true, u"DNS:gateway.invalid"_s, false);
    }

    void trustsWhomTheSystemTrusts()
    {
        QFETCH(bool, known);
        QFETCH(QString, name);
        QFETCH(bool, trusted);
        const QTemporaryDir files;
        const QSslCertificate certificate = makeCertificate(files.path(), name);
        QVERIFY(!certificate.isNull());
        const auto restored = qScopeGuard([before = QSslConfiguration::defaultConfiguration()] {
            QSslConfiguration::setDefaultConfiguration(before);
        });
        QSslConfiguration server = QSslConfiguration::defaultConfiguration();
        server.setLocalCertificate(certificate);
        server.setPrivateKey(keyIn(files.path()));
        if (known) {
            QSslConfiguration client = QSslConfiguration::defaultConfiguration();
            client.addCaCertificate(certificate);
            QSslConfiguration::setDefaultConfiguration(client);
        }
        StandInGateway gateway(QHostAddress::LocalHost, 0, server);
        gateway.answer("/a", StandInGateway::response(200, "there"));

        const HttpResult answer = ask(gateway.url() + u"/a"_s);
        QCOMPARE(answer.has_value(), trusted);
        QCOMPARE(gateway.requestCount(), trusted ? 1 : 0); // nobody else gets to see a token
    }

    void goesPastProxies()
    {
        const StandInGateway proxy;
        const StandInGateway gateway;
        QNetworkProxy::setApplicationProxy(
            {QNetworkProxy::HttpProxy, u"127.0.0.1"_s, proxy.serverPort()});
        // An address of this machine that is not known as such.
        const auto answer = ask(gateway.url().replace(u"127.0.0.1"_s, u"0.0.0.0"_s));
        QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
        QVERIFY(answer && answer->status == 404 && !ask(u"ftp"_s + gateway.url().mid(4)));
        QCOMPARE(gateway.requestCount(), 1);
        QCOMPARE(proxy.requestCount(), 0);
    }

    void goneClientTellsNobody()
    {
        StandInGateway gateway;
        gateway.answer("/hole", {});
        bool told = false;
        {
            HttpClient client;
            client.send({.url = QUrl(gateway.url() + u"/hole"_s), .deadline = 10s},
                        [&](const HttpResult &) { told = true; });
            QTRY_COMPARE(gateway.requestCount(), 1);
        }
        QTRY_COMPARE(gateway.clientCount(), 0);
        QVERIFY(!told);
    }

private:
    // A certificate that signs itself.
    static QSslCertificate makeCertificate(const QString &directory, const QString &name)
    {
        outputOf(u"openssl"_s,
                 {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-subj"_s,
                  u"/CN=gateway"_s, u"-addext"_s, u"subjectAltName="_s + name, u"-keyout"_s,
                  directory + u"/key.pem"_s, u"-out"_s, directory + u"/certificate.pem"_s});
        return QSslCertificate::fromPath(directory + u"/certificate.pem"_s).value(0);
    }

    static QSslKey keyIn(const QString &directory)
    {
        QFile file(directory + u"/key.pem"_s);
        return file.open(QFile::ReadOnly) ? QSslKey(&file, QSsl::Rsa) : QSslKey();
    }

    static HttpResult ask(const QString &url, const std::optional<QByteArray> &body = {})
    {
        HttpClient client;
        std::optional<HttpResult> answer;
        client.send(
            {.url = QUrl(url), .headers = {{"Authorization", "t"}}, .body = body, .deadline = 4s},
            [&](const HttpResult &result) { answer = result; });
        if (answer || !QTest::qWaitFor([&] { return answer.has_value(); })) {
            return std::unexpected(u"told too early or never"_s);
        }
        return *answer;
    }
};

QTEST_GUILESS_MAIN(TestHttp)
#include "test_http.moc"
