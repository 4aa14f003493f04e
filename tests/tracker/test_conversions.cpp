#include "core/Capitalize.h"
#include "support/Rows.h"
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

// The members' values with bars between them; a dash stands for a member that is not there.
QString valuesOf(const QJsonObject &object, const QStringList &members)
{
    QStringList values;
    for (const QString &member : members) {
        const QJsonValue value = object.value(member);
        values.append(value.isUndefined() ? u"-"_s
                      : value.isNull()    ? u"null"_s
                                          : value.toVariant().toString());
    }
    return values.join(u'|');
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

    void capitalizes()
    {
        const QList<std::pair<QString, QString>> texts{{u"code reviewer"_s, u"Code Reviewer"_s},
                                                       {u"code-reviewer"_s, u"Code-Reviewer"_s},
                                                       {u"QA"_s, u"Qa"_s},
                                                       {u"don't"_s, u"Don't"_s},
                                                       {u"0f3c"_s, u"0F3c"_s},
                                                       {u"élan ÜBER ωmega"_s, u"Élan Über Ωmega"_s},
                                                       {u"𐐨𐐨"_s, u"𐐀𐐨"_s}};
        for (const auto &[text, capitalized] : texts) {
            QCOMPARE(capitalizeWords(text), capitalized);
        }
    }

    void sessions_data()
    {
        // agents: id|name|status|detail|parent|model
        const Rows<QByteArray, QString> row("sessions", "agents");
        row("agent, model of the wrong type",
            R"([{"key":"agent:code-reviewer:slack:1","agentId":"code-reviewer","model":5}])",
            u"code-reviewer|Code Reviewer|active|-|null|-"_s);
        row("an agent's main session wins, seen later",
            R"([{"key":"agent:b:slack:1","agentId":"b","model":"1"},
                {"key":"agent:b:main","agentId":"b","model":"2"}])",
            u"b|B|active|Main session|null|2"_s);
        row("an agent's main session wins, seen first",
            R"([{"key":"agent:b:main","agentId":"b"},{"key":"agent:b:slack:1","agentId":"b"}])",
            u"b|B|active|Main session|null|-"_s);
        row("sub-agent", R"([{"key":"agent:main:subagent:0f3c9a1b77d2"}])",
            u"subagent-0f3c9a1b|Sub-Agent|processing|Sub-agent task|main|-"_s);
        row("short sub-agent of a sub-agent",
            R"([{"key":"a:subagent:x:subagent:é👨‍👩‍👧‍👦","label":7}])",
            u"subagent-é👨‍👩‍👧‍👦|Sub-Agent|processing|Sub-agent task|main|-"_s);
        row("sub-agent with label", R"([{"key":"agent:main:subagent:y","label":"fix-the-bug"}])",
            u"fix-the-bug|Fix The Bug|processing|fix-the-bug|main|-"_s);
        row("two cron sessions, a run",
            R"([{"key":"agent:main:cron:1","model":"first"},{"key":"agent:main:cron:2"},
                {"key":"agent:main:cron:1:run:9"}])",
            u"cron|Cron Runner|processing|Running cron job|main|first"_s);
        row("nothing is a string", R"([{"key":1,"agentId":2}])", u"main|Main|active|-|null|-"_s);
        row("none", "[]", u"main|Main|idle|No active sessions|-|-"_s);
        row("one is no object", R"([{"key":"agent:main:main"},3])", u"no document"_s);
        row("no array", R"({"0":{}})", u"no document"_s);
    }

    void sessions()
    {
        QFETCH(QByteArray, sessions);
        const QDateTime now(QDate(2026, 11, 16), QTime(15, 7, 30));
        const auto document =
            agentStatusFromSessions("{\"x\":0,\"sessions\":" + sessions.toStdString() + "}", now);
        if (!document) {
            QTEST(u"no document"_s, "agents");
            return;
        }
        const QJsonObject root = QJsonDocument::fromJson(*document).object();
        QCOMPARE(root["completions"_L1].toArray(), QJsonArray());
        QStringList entries;
        const QJsonObject agents = root["agents"_L1].toObject();
        for (const QString &id : agents.keys()) {
            const QJsonObject entry = agents[id].toObject();
            QCOMPARE(entry["updated"_L1].toString(), u"3:07 PM"_s);
            entries.append(
                id + u'|' +
                valuesOf(entry, {u"name"_s, u"status"_s, u"detail"_s, u"parent"_s, u"model"_s}));
        }
        QTEST(entries.join(u' '), "agents");
    }

    void jobs_data()
    {
        // converted: schedule|status|enabled
        const Rows<QByteArray, QString> row("job", "converted");
        row("nothing known", "{}", u"|idle|true"_s);
        row("every 15 minutes, well",
            R"({"schedule":{"kind":"every","everyMs":900000},"state":{"lastStatus":"ok"}})",
            u"every 15m|green|true"_s);
        row("an hour", R"({"schedule":{"kind":"every","everyMs":3600000}})",
            u"every 1h|idle|true"_s);
        row("not an integer", R"({"schedule":{"kind":"every","everyMs":"1h"}})",
            u"every 0m|idle|true"_s);
        row("zone, error",
            R"({"schedule":{"kind":"cron","expr":"0 9 * * *","tz":"Europe/Berlin"},
                "state":{"lastStatus":"error"}})",
            u"cron: 0 9 * * * (Europe/Berlin)|red|true"_s);
        row("empty zone, running",
            R"({"schedule":{"kind":"cron","expr":"0 9 * * 1","tz":""},
                "state":{"lastStatus":"active"}})",
            u"cron: 0 9 * * 1|blue|true"_s);
        row("once, never run", R"({"schedule":{"kind":"at"},"state":{}})",
            u"one-shot|yellow|true"_s);
        row("unknown kind", R"({"schedule":{"kind":"moon"},"enabled":1})", u"moon|idle|true"_s);
        row("disabled", R"({"enabled":false,"state":{"lastStatus":"error"}})", u"|stopped|false"_s);
        row("disabled, no state", R"({"enabled":false,"state":[]})", u"|idle|false"_s);
    }

    void jobs()
    {
        QFETCH(QByteArray, job);
        QTEST(valuesOf(convert(job), {u"schedule"_s, u"status"_s, u"enabled"_s}), "converted");
    }

    void namesTimesAndMessages()
    {
        const QStringList members{u"id"_s, u"name"_s, u"lastRun"_s, u"nextRun"_s, u"payload"_s};
        QCOMPARE(
            valuesOf(convert(R"({"id":"j","state":{"lastRunAtMs":"1"},"payload":{}})"), members),
            u"j|Unnamed|null|null|null"_s);
        QCOMPARE(valuesOf(convert(R"({"id":"j","name":"N","payload":{"message":"one\ntwo"},)"
                                  R"("state":{"lastRunAtMs":1794999970000.5,)"
                                  R"("nextRunAtMs":1795007200000}})"),
                          members),
                 u"j|N|just now|in 2h|one"_s);
        QVERIFY(convert("{}")["id"_L1].toString() != convert("{}")["id"_L1].toString());
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
        QCOMPARE(minutesFromNow(-60, now), u"1h ago"_s);
        QCOMPARE(minutesFromNow(-1440, now), u"1d ago"_s);
        QCOMPARE(minutesFromNow(1, now), u"in 1m"_s);
        QCOMPARE(minutesFromNow(60, now), u"in 1h"_s);
        QCOMPARE(minutesFromNow(1440, now), u"Nov 17, 3:07 PM"_s);
        // Far beyond any calendar: an answer, whichever.
        QVERIFY(!formatRelativeTime(1e300, now).isEmpty());
        QVERIFY(formatRelativeTime(-1e300, now).endsWith("d ago"_L1));
    }

private:
    static QJsonObject convert(const QByteArray &job)
    {
        const auto document = cronTrackerFromJobs("{\"jobs\":[" + job.toStdString() + "]}",
                                                  QDateTime::fromSecsSinceEpoch(1'795'000'000));
        const QJsonObject tracker =
            QJsonDocument::fromJson(document.value_or(QByteArray())).object();
        const bool dated = tracker["updated"_L1] == u"2026-11-18T11:06:40Z"_s;
        return dated && tracker["version"_L1] == 1 ? tracker["jobs"_L1][0].toObject()
                                                   : QJsonObject();
    }
};

QTEST_APPLESS_MAIN(TestConversions)
#include "test_conversions.moc"
