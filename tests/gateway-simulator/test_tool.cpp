#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "support/ScratchHome.h"
#include "support/SimulatedGateway.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTest>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

using namespace ostrelle;
using namespace std::chrono_literals;
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

    void sessionsComeAndGo()
    {
        QSet<QString> kinds;
        QSet<qsizetype> counts;
        QSet<QString> subagents;
        for (int minute = 0; minute < 60; ++minute) {
            playSimulator(*m_home, {{u"now"_s, toMs(noon) + minute * qint64{60'000}}});
            const QJsonArray sessions =
                list(u"sessions --all-agents --active 2 --json"_s, u"sessions");
            counts.insert(sessions.size());
            QCOMPARE(sessions[0]["key"_L1], u"agent:main:main"_s);
            for (const QJsonValue session : sessions) {
                const QString key = session["key"_L1].toString();
                if (key.contains(":subagent:"_L1)) {
                    subagents.insert(key);
                }
                QVERIFY(key.startsWith(u"agent:"_s + session["agentId"_L1].toString() + u':'));
                const qint64 updatedMs = session["updatedAt"_L1].toInteger();
                const qint64 nowMs = toMs(noon) + minute * qint64{60'000};
                QVERIFY(updatedMs <= nowMs && updatedMs >= nowMs - 120'000);
                kinds.insert(key.section(u':', 2, 2) +
                             (key.contains(":run:"_L1) ? u" run"_s : u""_s) +
                             (session["label"_L1].isString() ? u" labelled"_s : u""_s));
            }
        }
        QVERIFY(counts.size() > 2);
        QVERIFY(subagents.size() > 10); // of three, each somebody new each time
        QCOMPARE(kinds, QSet({u"main"_s, u"chat"_s, u"mail"_s, u"cron"_s, u"cron run"_s,
                              u"subagent"_s, u"subagent labelled"_s}));
    }

    void jobsFollowTheCalendar_data()
    {
        QTest::addColumn<QString>("job");
        QTest::addColumn<QString>("now");
        QTest::addColumn<QString>("last");
        QTest::addColumn<QString>("next");
        QTest::newRow("before the hour") << u"Morning briefing"_s << u"2026-01-15T07:59:59Z"_s
                                         << u"2026-01-14T08:00:00Z"_s << u"2026-01-15T08:00:00Z"_s;
        QTest::newRow("at the hour") << u"Morning briefing"_s << u"2026-01-15T08:00:00Z"_s
                                     << u"2026-01-15T08:00:00Z"_s << u"2026-01-16T08:00:00Z"_s;
        QTest::newRow("clocks change") << u"Morning briefing"_s << u"2026-03-29T06:00:00Z"_s
                                       << u"2026-03-28T08:00:00Z"_s << u"2026-03-29T07:00:00Z"_s;
        QTest::newRow("once a week") << u"Weekly report"_s << u"2026-01-16T17:29:00Z"_s
                                     << u"2026-01-09T17:30:00Z"_s << u"2026-01-16T17:30:00Z"_s;
        QTest::newRow("interval") << u"Inbox sweep"_s << u"2026-01-15T07:59:59Z"_s
                                  << u"2026-01-15T07:55:00Z"_s << u"2026-01-15T08:00:00Z"_s;
    }

    void jobsFollowTheCalendar()
    {
        QFETCH(QString, job);
        QFETCH(QString, now);
        QFETCH(QString, last);
        QFETCH(QString, next);
        playSimulator(*m_home, {{u"now"_s, toMs(now)}});
        const QJsonValue state = jobNamed(job)["state"_L1];
        QCOMPARE(state["lastRunAtMs"_L1].toInteger(), toMs(last));
        QCOMPARE(state["nextRunAtMs"_L1].toInteger(), toMs(next));
    }

    void jobsShowEveryState()
    {
        QSet<QString> statuses;
        for (int minute = 0; minute < 30; ++minute) {
            playSimulator(*m_home, {{u"now"_s, toMs(noon) + minute * qint64{60'000}}});
            for (const QJsonValue job : jobs()) {
                statuses.insert(job["state"_L1].isObject()
                                    ? job["state"_L1]["lastStatus"_L1].toString(u"none yet"_s)
                                    : u"no state"_s);
            }
        }
        QCOMPARE(statuses, QSet({u"ok"_s, u"error"_s, u"running"_s, u"none yet"_s, u"no state"_s}));
        QCOMPARE(list(u"cron list --json"_s, u"jobs").size(), jobs().size() - 1);
        QVERIFY(!jobNamed(u"Newsletter digest")["enabled"_L1].toBool());
    }

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
        for (const QJsonValue project : tracker["projects"_L1].toArray()) {
            QVERIFY(project["description"_L1].isString());
            QVERIFY(project["progress"_L1].isDouble());
            QVERIFY(!project["workstreams"_L1].toArray().isEmpty());
        }
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
    }

    void refusesWhatItDoesNotKnow()
    {
        for (const QString &command :
             {u"dance"_s, u"cron"_s, u"cron run"_s, u"serve --mode odd"_s}) {
            const auto result =
                runChild({.program = simulatorProgram(), .arguments = command.split(u' ')},
                         {.capture = Capture::StandardError});
            QCOMPARE(result->exitStatus, 2);
            QVERIFY(result->output.startsWith("Usage:"));
        }
    }

    void misbehaves_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QByteArray>("beginning");
        QTest::addColumn<qsizetype>("atLeast");
        QTest::addColumn<bool>("isExit");
        QTest::newRow("killed halfway") << u"die"_s << QByteArray("{\n") << qsizetype{100} << false;
        QTest::newRow("floods") << u"flood"_s << QByteArray("xxx") << qsizetype{100'000'000}
                                << true;
        QTest::newRow("no JSON") << u"garbage"_s << QByteArray("Oops") << qsizetype{10} << true;
        QTest::newRow("other JSON")
            << u"other-shape"_s << QByteArray("[]\n") << qsizetype{3} << true;
        QTest::newRow("not UTF-8")
            << u"not-utf8"_s << QByteArray("\xff\xfe{") << qsizetype{100} << true;
        QTest::newRow("lone surrogates")
            << u"surrogates"_s << QByteArray("{") << qsizetype{10} << true;
        QTest::newRow("nested") << u"deep"_s << QByteArray(1000, '[') << qsizetype{200'000} << true;
        QTest::newRow("silent") << u"nothing"_s << QByteArray() << qsizetype{0} << true;
        QTest::newRow("fails") << u"fail"_s << QByteArray() << qsizetype{0} << true;
        QTest::newRow("unknown mode") << u"well"_s << QByteArray("{\n") << qsizetype{100} << true;
    }

    void misbehaves()
    {
        QFETCH(QString, mode);
        QFETCH(QByteArray, beginning);
        QFETCH(qsizetype, atLeast);
        QFETCH(bool, isExit);
        playSimulator(*m_home, {{u"tool"_s, QJsonObject{{u"cron list"_s, mode}}}});
        const auto result = runChild(
            {.program = simulatorProgram(), .arguments = {u"cron"_s, u"list"_s, u"--json"_s}},
            {.maxOutputBytes = 200'000'000});
        QVERIFY(result);
        QCOMPARE(result->exitedNormally, isExit);
        QVERIFY(result->output.startsWith(beginning));
        QVERIFY(result->output.size() >= atLeast);
        QVERIFY(!beginning.isEmpty() || result->output.isEmpty());
        QVERIFY(run(u"sessions --json"_s).output.startsWith("{\n")); // the others are not affected
    }

    void hangs()
    {
        playSimulator(*m_home, {{u"tool"_s, u"hang"_s}});
        const auto result = runChild({.program = simulatorProgram(), .arguments = {u"sessions"_s}},
                                     {.killAfter = 1s});
        QVERIFY(!result && result.error().kind == ChildFailure::Kind::TimedOut);
    }

    void ignoresRequestsToEnd()
    {
        playSimulator(*m_home, {{u"tool"_s, u"stubborn"_s}});
        QProcess tool;
        tool.start(simulatorProgram(), {u"sessions"_s});
        QVERIFY(tool.waitForStarted());
        QFile status(u"/proc/%1/status"_s.arg(tool.processId()));
        const auto ignoredSignals = [&] {
            status.open(QIODevice::ReadOnly);
            const QByteArray text = status.readAll();
            status.close();
            return text.sliced(text.indexOf("SigIgn:") + 7, 17).trimmed().toULongLong(nullptr, 16);
        };
        QTRY_VERIFY((ignoredSignals() >> (SIGTERM - 1)) & 1U);
        tool.kill();
        QVERIFY(tool.waitForFinished());
    }

    void leavesAGrandchildWithThePipe()
    {
        playSimulator(*m_home, {{u"tool"_s, u"grandchild"_s}});
        std::array<int, 2> ends{};
        QCOMPARE(::pipe2(ends.data(), O_CLOEXEC), 0);
        const Descriptor reading(ends[0]);
        Descriptor writing(ends[1]);
        QProcess tool;
        tool.setChildProcessModifier([&] { ::dup2(writing.get(), STDOUT_FILENO); });
        tool.start(simulatorProgram(), {u"sessions"_s});
        QVERIFY(tool.waitForFinished());
        writing = Descriptor();
        QByteArray answer(1'000'000, '\0');
        QVERIFY(::read(reading.get(), answer.data(), 1'000'000) > 0);
        ::fcntl(reading.get(), F_SETFL, O_NONBLOCK);
        QCOMPARE(::read(reading.get(), answer.data(), 1), -1); // 0 if nobody held the pipe
        QCOMPARE(errno, EAGAIN);
    }

private:
    std::unique_ptr<ScratchHome> m_home;
};

QTEST_GUILESS_MAIN(TestTool)
#include "test_tool.moc"
