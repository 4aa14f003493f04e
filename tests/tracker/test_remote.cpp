#include "core/BackgroundWork.h"
#include "gateway/StandInGateway.h"
#include "settings/OstrelleConfig.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"
#include "tracker/RemoteDataSource.h"

#include <QElapsedTimer>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Fetched = std::expected<QByteArray, FetchError>;

namespace
{

const Fetched notReachable = std::unexpected(FetchError::notReachable());
const Fetched authRejected = std::unexpected(FetchError::authRejected());

} // namespace

class TestRemote : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wherefrom_data()
    {
        const Rows<QString, bool, QString> rows("gateway", "isRemote", "base");
        const auto row = [&](const char *gateway, bool isRemote, const QString &base) {
            rows(gateway, QString::fromLatin1(gateway), isRemote, base);
        };
        row("http://127.0.0.1:18789", false, {});
        row("http://100.64.0.7:18789", true, u"http://100.64.0.7:18794"_s);
        row("https://host.tail.ts.net", true, u"https://host.tail.ts.net/ostrelle"_s);
        row("https://localhost", false, u"https://localhost/ostrelle"_s);
        row("http://LOCALHOST:18789", true, u"http://LOCALHOST:18794"_s);
        row("http://[::1]:18789", true, u"http://[:18794"_s);
        row("host:18789", true, u"http://host:18794"_s);
        row("HTTPS://box", true, u"HTTPS://box/ostrelle"_s);
        row("Http://box:1", true, u"http://box:18794"_s);
        row("", true, {});
    }

    void wherefrom()
    {
        QFETCH(QString, gateway);
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.url = gateway;
        QTEST(RemoteDataSource::isRemote(config), "isRemote");
        QTEST(RemoteDataSource::statusBaseURL(config).value_or(QString()), "base");
    }

    void answers_data()
    {
        // flood: what is sent behind the answer, over and over
        const Rows<QByteArray, QByteArray, Fetched> row("answer", "flood", "fetched");
        const auto response = [](int status) { return StandInGateway::response(status, "body"); };
        row("200", response(200), {}, "body");
        row("401", response(401), {}, authRejected);
        row("403", response(403), {}, authRejected);
        row("500", response(500), {}, notReachable);
        row("no HTTP", "SSH-2.0\r\n", {}, notReachable);
        row("endless body", "HTTP/1.1 200 OK\r\n\r\n", QByteArray(1 << 20, 'x'), notReachable);
        row("endless head", "HTTP/1.1 200 OK\r\nX: ", QByteArray(1 << 20, 'x'), notReachable);
    }

    void answers()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QByteArray, flood);
        StandInGateway server;
        server.answer("/status", answer);
        server.flood(flood);
        QTEST(fetch(server.url()), "fetched");
        QVERIFY(
            server.requests("/status").value(0).contains("\r\nAuthorization: Bearer secret\r\n"));
    }

    // Without a token, or when another gateway is in use.
    void asksNobody()
    {
        StandInGateway server;
        for (const auto &[token, fetched] :
             {std::pair("", authRejected), {"secret", notReachable}}) {
            m_home.write(u".duskrell/duskrell.json"_s,
                         QByteArray(R"({"gateway":{"auth":{"token":")") + token + "\"}}}");
            QCOMPARE(RemoteDataSource::fetchRemoteData(server.url(), u"/status"_s,
                                                       OstrelleConfig::defaults(),
                                                       *m_home.settings().tokens),
                     fetched);
        }
        QCOMPARE(server.requestCount(), 0);
    }

    // What is asked is cut from the text of the address, whose host is this machine.
    void sendsNoTokenToAUserPart()
    {
        StandInGateway server(QHostAddress(u"127.94.18.9"_s), 18794);
        OstrelleConfig config = OstrelleConfig::defaults();
        config.gateway.url = u"http://127.94.18.9:x@[::1]:18789"_s;
        config.save();
        m_home.write(u".duskrell/duskrell.json"_s, R"({"gateway":{"auth":{"token":"secret"}}})");
        const QString base = RemoteDataSource::statusBaseURL(config).value();
        QCOMPARE(base, u"http://[:18794"_s);
        QCOMPARE(RemoteDataSource::fetchRemoteData(base, u"/status"_s, config,
                                                   *m_home.settings().tokens),
                 authRejected);
        QCOMPARE(server.requestCount(), 0);
    }

    void eachLimitHolds()
    {
        StandInGateway peer;
        peer.answer("/status", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n");
        QCOMPARE(fetch(peer.url(), {.request = 100ms, .overall = 1h}), notReachable);
        peer.answer("/status", "HTTP/1.1 200 OK\r\n\r\n");
        peer.flood("."); // a byte at a time, which is no silence
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(fetch(peer.url(), {.request = 100ms, .overall = 400ms}), notReachable);
        QVERIFY(timer.elapsed() >= 400);
        // What is no address, and where nobody is.
        QCOMPARE(fetch(u"http://[:18794"_s), notReachable);
        QCOMPARE(fetch(u"http://127.0.0.1:1"_s), notReachable);
    }

private:
    // Fetches "/status" in the background while the servers here answer.
    static Fetched fetch(const QString &base, const FetchLimits &limits = {})
    {
        const auto fetched = utilityPool().run([base, limits] {
            return RemoteDataSource::fetchWithToken(base, u"/status"_s, u"secret"_s, limits);
        });
        const bool finished = QTest::qWaitFor([&] { return fetched.isFinished(); }, 4000);
        return finished ? fetched.result() : Fetched("not within the limits");
    }

    ScratchHome m_home;
};

QTEST_GUILESS_MAIN(TestRemote)
#include "test_remote.moc"
