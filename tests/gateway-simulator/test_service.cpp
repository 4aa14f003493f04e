#include "support/Exchange.h"
#include "support/ScratchHome.h"
#include "support/SimulatedGateway.h"

#include <QDir>
#include <QJsonDocument>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

namespace
{

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

    void refusesStrangers()
    {
        const auto status = [&](const QByteArray &request) {
            return exchange(m_gateway->port(), request).first(12);
        };
        QCOMPARE(status(chat("x", R"({"messages":[]})")), "HTTP/1.1 401");
        QCOMPARE(status("hello\r\n\r\n"), "HTTP/1.1 400");
    }

    void chatsAndRemembers()
    {
        const QByteArray reply = exchange(
            m_gateway->port(),
            chat(m_gateway->token(), R"({"messages":[{"role":"system","content":"be brief"},)"
                                     R"({"role":"user","content":"💬 how many jobs?"}]})"));
        const QString content = QJsonDocument::fromJson(reply.sliced(
            reply.indexOf('{')))["choices"_L1][0]["message"_L1]["content"_L1]
                                    .toString();
        QVERIFY2(content.startsWith(u"8 jobs"_s), reply);
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

private:
    const ScratchHome m_home;
    std::optional<SimulatedGateway> m_gateway;
};

QTEST_GUILESS_MAIN(TestService)
#include "test_service.moc"
