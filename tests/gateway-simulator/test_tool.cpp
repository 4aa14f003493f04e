#include "platform/ChildProcess.h"
#include "support/ScratchHome.h"
#include "support/SimulatedGateway.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <memory>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

ChildResult run(const QString &command)
{
    return runChild({.program = simulatorProgram(), .arguments = command.split(u' ')})
        .value_or(ChildResult());
}

QJsonArray list(const QString &command, QStringView name)
{
    return QJsonDocument::fromJson(run(command).output)[name].toArray();
}

QJsonArray jobs()
{
    return list(u"cron list --json --all"_s, u"jobs");
}

QJsonValue jobNamed(QStringView name)
{
    for (const QJsonValue job : jobs()) {
        if (job["name"_L1].toString() == name) {
            return job;
        }
    }
    return {};
}

qint64 toMs(const QString &iso)
{
    return QDateTime::fromString(iso, Qt::ISODate).toMSecsSinceEpoch();
}

const QString noon = u"2026-03-12T12:00:00Z"_s;

} // namespace

class TestTool : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<ScratchHome>(); }

    void runsAndRemovesJobs()
    {
        playSimulator(*m_home, {{u"now"_s, toMs(noon) + 100'000}});
        const QString id = jobNamed(u"OSTRELLE Project Tracker")["id"_L1].toString();
        QCOMPARE(run(u"cron run "_s + id).exitStatus, 0);
        const QJsonValue state = jobNamed(u"OSTRELLE Project Tracker")["state"_L1];
        QCOMPARE(state["lastRunAtMs"_L1].toInteger(), toMs(noon) + 100'000);
        QCOMPARE(state["lastStatus"_L1], u"running"_s);
        const auto tracker =
            QJsonDocument::fromJson(m_home->read(u".ostrelle/ostrelle-project-tracker.json"_s));
        QCOMPARE(tracker["version"_L1], 1);
        QVERIFY(!tracker["projects"_L1].toArray().isEmpty());

        QCOMPARE(run(u"cron remove "_s + id).exitStatus, 0);
        QVERIFY(jobNamed(u"OSTRELLE Project Tracker").isNull());
        QCOMPARE(run(u"cron remove "_s + id).exitStatus, 1);
    }

    void keepsTheConfiguration()
    {
        QCOMPARE(run(u"config get gateway.auth.token"_s).exitStatus, 1);
        QCOMPARE(run(u"gateway token --reset"_s).exitStatus, 0);
        const QByteArray token = run(u"config get gateway.auth.token"_s).output;
        QCOMPARE(token.trimmed().size(), 48);
        run(u"gateway token --reset"_s);
        QVERIFY(run(u"config get gateway.auth.token"_s).output != token);

        run(u"config set gateway.tailscale.mode serve"_s);
        run(u"config set gateway.http.endpoints.chatCompletions.enabled true"_s);
        const auto config = QJsonDocument::fromJson(m_home->read(u".duskrell/duskrell.json"_s));
        QCOMPARE(config["gateway"_L1]["tailscale"_L1]["mode"_L1], u"serve"_s);
        QCOMPARE(
            config["gateway"_L1]["http"_L1]["endpoints"_L1]["chatCompletions"_L1]["enabled"_L1],
            true);
        QCOMPARE(run(u"config set gateway.tailscale.mode.deeper 1"_s).exitStatus, 1);
        QCOMPARE(run(u"config get gateway.tailscale"_s).output, "{\"mode\":\"serve\"}\n");

        m_home->write(u".duskrell/duskrell.json"_s, "{broken");
        QCOMPARE(run(u"gateway token --reset"_s).exitStatus, 1);
        QCOMPARE(m_home->read(u".duskrell/duskrell.json"_s), "{broken");
    }

    void setsAGatewayUp()
    {
        QCOMPARE(run(u"onboard"_s).exitStatus, 0);
        QVERIFY(m_home->exists(u".duskrell/agents/main/agent"_s));
        QCOMPARE(run(u"config get gateway.auth.token"_s).output.size(), 49);
        QCOMPARE(run(u"dance"_s).exitStatus, 2);
    }

private:
    std::unique_ptr<ScratchHome> m_home;
};

QTEST_GUILESS_MAIN(TestTool)
#include "test_tool.moc"
