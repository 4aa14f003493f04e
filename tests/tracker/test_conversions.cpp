#include "core/Capitalize.h"
#include "tracker/JobList.h"
#include "tracker/SessionList.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

QJsonObject objectOf(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

QString minutesFromNow(qint64 minutes, const QDateTime &now)
{
    return formatRelativeTime(static_cast<double>(now.toMSecsSinceEpoch() + minutes * 60'000), now);
}

} // namespace

class TestConversions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QLocale::setDefault(QLocale(u"en_US"_s)); }

    void capitalizes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("capitalized");
        QTest::newRow("words") << u"code reviewer"_s << u"Code Reviewer"_s;
        QTest::newRow("hyphen") << u"code-reviewer"_s << u"Code-Reviewer"_s;
        QTest::newRow("capitals") << u"QA"_s << u"Qa"_s;
        QTest::newRow("apostrophe") << u"don't"_s << u"Don't"_s;
        QTest::newRow("digits first") << u"0f3c"_s << u"0F3c"_s;
        QTest::newRow("not ASCII") << u"élan ÜBER ωmega"_s << u"Élan Über Ωmega"_s;
        QTest::newRow("beyond the first plane") << u"𐐨𐐨"_s << u"𐐀𐐨"_s;
        QTest::newRow("combining mark") << u"éA"_s << u"Éa"_s;
        QTest::newRow("empty") << QString() << QString();
    }

    void capitalizes()
    {
        QFETCH(QString, text);
        QTEST(capitalizeWords(text), "capitalized");
    }

    void sessions_data()
    {
        QTest::addColumn<QByteArray>("sessions");
        QTest::addColumn<QByteArray>("agents");
        const auto row = [](const char *name, const QByteArray &sessions,
                            const QByteArray &agents) {
            QTest::newRow(name) << sessions << agents;
        };
        row("none", "[]",
            R"({"main":{"name":"Main","status":"idle","detail":"No active sessions"}})");
        row("main session", R"([{"key":"agent:main:main","agentId":"main","model":"m"}])",
            R"({"main":{"name":"Main","status":"active","detail":"Main session","parent":null,
                "model":"m"}})");
        row("agent, model of the wrong type",
            R"([{"key":"agent:code-reviewer:slack:123","agentId":"code-reviewer","model":5}])",
            R"({"code-reviewer":{"name":"Code Reviewer","status":"active","parent":null}})");
        row("its main session wins",
            R"([{"key":"agent:qa:main","agentId":"qa"},{"key":"agent:qa:slack:1","agentId":"qa"},
                {"key":"agent:b:slack:1","agentId":"b","model":"1"},
                {"key":"agent:b:main","agentId":"b","model":"2"}])",
            R"({"qa":{"name":"Qa","status":"active","detail":"Main session","parent":null},
                "b":{"name":"B","status":"active","detail":"Main session","parent":null,
                "model":"2"}})");
        row("sub-agents",
            R"([{"key":"agent:main:subagent:0f3c9a1b77d2"},
                {"key":"agent:main:subagent:x:subagent:é👨‍👩‍👧‍👦","label":7},
                {"key":"agent:main:subagent:y","label":"fix-the-bug"}])",
            R"({"subagent-0f3c9a1b":{"name":"Sub-Agent","status":"processing",
                "detail":"Sub-agent task","parent":"main"},
                "subagent-é👨‍👩‍👧‍👦":{"name":"Sub-Agent","status":"processing",
                "detail":"Sub-agent task","parent":"main"},
                "fix-the-bug":{"name":"Fix The Bug","status":"processing","detail":"fix-the-bug",
                "parent":"main"}})");
        row("two cron sessions, a run",
            R"([{"key":"agent:main:cron:1","model":"first"},{"key":"agent:main:cron:2"},
                {"key":"agent:main:cron:1:run:9"}])",
            R"({"cron":{"name":"Cron Runner","status":"processing","detail":"Running cron job",
                "parent":"main","model":"first"}})");
        row("nothing is a string", R"([{"key":1,"agentId":2}])",
            R"({"main":{"name":"Main","status":"active","parent":null}})");
        row("one is no object", R"([{"key":"agent:main:main"},3])", "");
        row("no array", R"({"0":{}})", "");
        row("cut", "[{\"key\":\"agent:main", "");
    }

    void sessions()
    {
        QFETCH(QByteArray, sessions);
        QFETCH(QByteArray, agents);
        const QDateTime now(QDate(2026, 11, 16), QTime(15, 7, 30));
        const auto document = agentStatusFromSessions(
            "{\"more\":0,\"sessions\":" + sessions.toStdString() + "}", now);
        QCOMPARE(document.has_value(), !agents.isEmpty());
        if (!document) {
            return;
        }
        QJsonObject expected = objectOf(agents);
        for (const QString &id : expected.keys()) {
            QJsonObject entry = expected[id].toObject();
            entry.insert("updated"_L1, u"3:07 PM"_s);
            expected.insert(id, entry);
        }
        QCOMPARE(objectOf(*document),
                 (QJsonObject{{u"agents"_s, expected}, {u"completions"_s, QJsonArray()}}));
    }

    void jobs_data()
    {
        QTest::addColumn<QByteArray>("job");
        QTest::addColumn<QByteArray>("converted");
        const auto row = [](const char *name, const QByteArray &job, const QByteArray &converted) {
            QTest::newRow(name) << job << converted;
        };
        row("nothing known", "{}", "{}");
        row("every 15 minutes",
            R"({"schedule":{"kind":"every","everyMs":900000},"state":{"lastStatus":"ok"}})",
            R"({"schedule":"every 15m","status":"green"})");
        row("every 90 minutes", R"({"schedule":{"kind":"every","everyMs":5400000}})",
            R"({"schedule":"every 1h"})");
        row("every 59.999 seconds", R"({"schedule":{"kind":"every","everyMs":59999}})",
            R"({"schedule":"every 0m"})");
        row("every, not an integer", R"({"schedule":{"kind":"every","everyMs":"1h"}})",
            R"({"schedule":"every 0m"})");
        row("cron with zone, error",
            R"({"schedule":{"kind":"cron","expr":"0 9 * * *","tz":"Europe/Berlin"},
                "state":{"lastStatus":"error"}})",
            "{\"schedule\":\"cron: 0 9 * * * (Europe/Berlin)\",\"status\":\"red\"}");
        row("cron with empty zone, running",
            R"({"schedule":{"kind":"cron","expr":"0 9 * * 1","tz":""},
                "state":{"lastStatus":"active"}})",
            R"({"schedule":"cron: 0 9 * * 1","status":"blue"})");
        row("once, never run", R"({"schedule":{"kind":"at"},"state":{}})",
            R"({"schedule":"one-shot","status":"yellow"})");
        row("unknown kind", R"({"schedule":{"kind":"moon"}})", R"({"schedule":"moon"})");
        row("disabled", R"({"enabled":false,"state":{"lastStatus":"error"}})",
            R"({"enabled":false,"status":"stopped"})");
        row("disabled without state", R"({"enabled":false,"state":[]})", R"({"enabled":false})");
        row("times and message",
            R"({"state":{"lastRunAtMs":1794999970000.5,"nextRunAtMs":1795007200000},
                "payload":{"message":"one\ntwo"},"name":"N","enabled":1})",
            R"({"status":"yellow","lastRun":"just now","nextRun":"in 2h","payload":"one",
                "name":"N"})");
    }

    void jobs()
    {
        QFETCH(QByteArray, job);
        QFETCH(QByteArray, converted);
        const auto now = QDateTime::fromSecsSinceEpoch(1'795'000'000);
        const auto document = cronTrackerFromJobs("{\"jobs\":[" + job.toStdString() + "]}", now);
        QVERIFY(document);
        const QJsonObject tracker = objectOf(*document);
        QCOMPARE(tracker["version"_L1], QJsonValue(1));
        QCOMPARE(tracker["updated"_L1].toString(), u"2026-11-18T11:06:40Z"_s);
        const QJsonObject actual = tracker["jobs"_L1][0].toObject();
        QVERIFY(!actual["id"_L1].toString().isEmpty());
        QJsonObject expected = objectOf(
            R"({"name":"Unnamed","schedule":"","status":"idle","enabled":true,"lastRun":null,
                "nextRun":null,"payload":null})");
        expected.insert("id"_L1, actual["id"_L1]);
        const QJsonObject different = objectOf(converted);
        for (const QString &key : different.keys()) {
            expected.insert(key, different[key]);
        }
        QCOMPARE(actual, expected);
    }

    void whatIsNoJobList()
    {
        for (const char *output : {"", "[]", "{}", R"({"jobs":{}})", R"({"jobs":[1]})", "no"}) {
            QVERIFY2(!cronTrackerFromJobs(output, QDateTime::currentDateTime()), output);
        }
    }

    void relativeTimes()
    {
        const QDateTime now(QDate(2026, 11, 16), QTime(15, 7, 30));
        QCOMPARE(minutesFromNow(0, now), u"just now"_s);
        QCOMPARE(minutesFromNow(-1, now), u"1m ago"_s);
        QCOMPARE(minutesFromNow(-59, now), u"59m ago"_s);
        QCOMPARE(minutesFromNow(-60, now), u"1h ago"_s);
        QCOMPARE(minutesFromNow(-1440, now), u"1d ago"_s);
        QCOMPARE(minutesFromNow(1, now), u"in 1m"_s);
        QCOMPARE(minutesFromNow(60, now), u"in 1h"_s);
        QCOMPARE(minutesFromNow(4320, now), u"Nov 19, 3:07 PM"_s);
        const auto nowMs = static_cast<double>(now.toMSecsSinceEpoch());
        QCOMPARE(formatRelativeTime(nowMs + 500, now), u"in 0m"_s);
        // Far beyond any calendar: an answer, whichever.
        QVERIFY(!formatRelativeTime(1e300, now).isEmpty());
        QVERIFY(formatRelativeTime(-1e300, now).endsWith("d ago"_L1));
    }
};

QTEST_APPLESS_MAIN(TestConversions)
#include "test_conversions.moc"
