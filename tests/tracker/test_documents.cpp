#include "support/Rows.h"
#include "tracker/AgentStatus.h"
#include "tracker/CronTracker.h"
#include "tracker/ProjectTracker.h"

#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

// Only what is there, so that a row shows what it is about.
QString describe(const AgentStatusItem &item)
{
    QStringList parts{item.id, item.name, item.status};
    for (const auto &part : {item.detail, item.model, item.updated, item.progressText}) {
        parts.append(part.value_or(u"-"_s));
    }
    return parts.join(u'|');
}

QString describe(const TopologyEntry &entry)
{
    QStringList parts{entry.id, entry.status};
    for (const auto &part : {entry.detail, entry.model, entry.progressText}) {
        parts.append(part.value_or(u"-"_s));
    }
    return (parts << entry.parentId).join(u'|');
}

std::string nested(std::size_t depth)
{
    return std::string(depth, '[') + std::string(depth, ']');
}

} // namespace

class TestDocuments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agents_data()
    {
        const Rows<QByteArray, QString, QString> row("agents", "list", "topology");
        row("aliases", R"({"coder":{"state":"busy","task":"Refactor","progress":42.9}})",
            u"coder|coder|busy|Refactor|-|-|42%"_s, u"coder|busy|Refactor|-|42%|main"_s);
        row("the readers prefer other members",
            R"({"a":{"phase":"p","summary":"s","note":"n","activity":"act","ts":"t"}})",
            u"a|a|p|s|-|t|-"_s, u"a|idle|act|-|-|main"_s);
        row("aliases of the wrong type are passed over",
            R"({"a":{"status":1,"state":"s","detail":null,"message":"m","parent":7,
                "spawnedBy":"b","updated":[],"updatedAt":"u","name":{},"model":false,"progress":7}})",
            u"a|a|s|m|-|u|7%"_s, u"a|s|m|-|7%|b"_s);
        row("no object", R"({"a":"text","b":{"model":"m","parent":null}})",
            u"b|b|unknown|-|m|-|-"_s, u"a|idle|-|-|-|main b|idle|-|m|-|main"_s);
        row("same names twice",
            R"({"a":{"status":"1"},"b":{},"a":{"status":"3"},"b":{"status":"4"}})",
            u"a|a|3|-|-|-|- b|b|4|-|-|-|-"_s, u"a|3|-|-|-|main b|4|-|-|-|main"_s);
        row("beyond 64 bits", R"({"a":{"progress":9223372036854775808.0,"progressText":"much"}})",
            u"a|a|unknown|-|-|-|much"_s, u"a|idle|-|-|much|main"_s);
        row("more digits than 64 bits hold", R"({"a":{"progress":99999999999999999999}})",
            u"a|a|unknown|-|-|-|-"_s, u"a|idle|-|-|-|main"_s);
        row("halves of surrogate pairs",
            R"({"a":{"status":"\ud83dx\\ud83d\udc00\ud83d\ud83d\ude00\ud83d"}})",
            u"a|a|\ufffdx\\ud83d\ufffd\ufffd😀\ufffd|-|-|-|-"_s,
            u"a|\ufffdx\\ud83d\ufffd\ufffd😀\ufffd|-|-|-|main"_s);
        row("agents are no object", "[1]", {}, {});
    }

    void agents()
    {
        QFETCH(QByteArray, agents);
        const std::string text = "{\"agents\":" + agents.toStdString() + "}";
        const auto payload = readAgentStatus(text);
        QVERIFY(payload);
        QStringList items;
        for (const AgentStatusItem &item : payload->agents) {
            items.append(describe(item));
        }
        QTEST(items.join(u' '), "list");
        const auto object = readAgentEntries(text);
        QVERIFY(object);
        QStringList entries;
        for (const JsonMember &entry : object->members()) {
            entries.append(describe(readTopologyEntry(entry)));
        }
        QTEST(entries.join(u' '), "topology");
    }

    void completions_data()
    {
        const Rows<QByteArray, QString> row("completions", "list");
        row("full", R"([{"agent":"a","text":"b","message":"c","ts":"d"}])", u"a|b|d"_s);
        row("summary only", R"([{"summary":"Shipped"}])", u"agent|Shipped|-"_s);
        row("nothing but wrong types", R"([{"agent":1,"text":{},"ts":2}])", u"agent|Completed|-"_s);
        row("one is a number", R"([{"text":"b"},1])", u""_s);
    }

    void completions()
    {
        QFETCH(QByteArray, completions);
        const auto payload = readAgentStatus(R"({"agents":{"a":{}},"completions":)" +
                                             completions.toStdString() + "}");
        QVERIFY(payload);
        QCOMPARE(payload->agents.size(), 1);
        QStringList items;
        for (const AgentCompletionItem &item : payload->completions) {
            items.append(item.agent + u'|' + item.text + u'|' + item.ts.value_or(u"-"_s));
        }
        QTEST(items.join(u' '), "list");
    }

    void whatIsNoDocument_data()
    {
        const Rows<std::string, QString> row("text", "problem");
        row("empty", "", u"Empty: no JSON found"_s);
        row("cut", R"({"agents":{"a":{}})",
            u"The JSON document has an improper structure: missing or superfluous commas, braces, "
            "missing keys, etc."_s);
        row("two documents", "{}{}", u"Unexpected trailing content in the JSON input."_s);
        row("not UTF-8", "{\"agents\":\"\xff\"}", u"The input is not valid UTF-8"_s);
        row("bad number in what nobody reads", R"({"x":01})", u"Problem while parsing a number"_s);
        row("bad word in what nobody reads", R"({"x":nul})",
            u"The JSON element does not have the requested type."_s);
        row("bad name of what nobody reads", R"({"\x":1})", u"Problem while parsing a string"_s);
        row("nested too deep", "{\"x\":" + nested(512) + "}",
            u"The JSON document was too deep (too many nested objects and arrays)"_s);
        row("nested deep", "{\"x\":" + nested(511) + "}", {});
        row("byte order mark", "\xEF\xBB\xBF{}", {});
        row("an array", "[]", {});
        std::string many = R"({"agents":{"x":0)";
        for (int i = 1; i < 100'000; ++i) {
            many += ",\"" + std::to_string(i) + "\":0";
        }
        row("as many as can be", many + "}}", {});
        row("one agent more", many + ",\"y\":0}}", u"agents: more than 100000"_s);
    }

    void whatIsNoDocument()
    {
        QFETCH(std::string, text);
        const auto payload = readAgentStatus(text);
        QTEST(payload ? QString() : payload.error(), "problem");
        QVERIFY(!payload || (payload->agents.isEmpty() && readAgentEntries(text)));
    }

    void floodsOfValuesAreRefused()
    {
        std::string text = "[0" + QByteArray(",0").repeated(4 * 1024 * 1024 - 2).toStdString();
        QVERIFY(readAgentStatus(text + "]") && !readAgentStatus(text + ",0]"));
        text = R"({"completions":[{})" + QByteArray(",{}").repeated(100'000).toStdString() + "]}";
        QCOMPARE(readAgentStatus(text).value().completions.size(), 100'000);
    }

    void projects_data()
    {
        const Rows<QByteArray, QByteArray, QString> row("change", "into", "problem");
        row("note is null", R"("note":"n")", R"("note":null)", {});
        row("no note", R"(,"note":"n")", "", {});
        row("integer with a fraction of zero", "50", "50.0", {});
        row("no description", R"("description":"d",)", "", u"projects[0].description: missing"_s);
        row("progress has a fraction", "50", "50.5", u"projects[0].progress: not an integer"_s);
        row("progress is beyond 64 bits", "50", "1e19", u"projects[0].progress: not an integer"_s);
        row("note is a number", R"("n")", "1", u"projects[0].workstreams[0].note: not a string"_s);
        row("workstream is a text", R"([{"id":"w")", R"(["x",{"id":"w")",
            u"projects[0].workstreams[0]: not an object"_s);
        row("projects are an object", R"("projects":[)", R"("projects":{},"x":[)",
            u"projects: not an array"_s);
        row("projects without number", R"("projects":[)",
            R"("projects":[)" + QByteArray("1,").repeated(100'000),
            u"projects: more than 100000"_s);
    }

    void projects()
    {
        QFETCH(QByteArray, change);
        QFETCH(QByteArray, into);
        QByteArray text = R"({"version":1,"updated":"u","projects":[{"id":"p","name":"P",)"
                          R"("description":"d","status":"green","progress":50,"workstreams":)"
                          R"([{"id":"w","name":"W","status":"red","progress":7,"note":"n"}]}]})";
        QVERIFY(text.contains(change));
        text.replace(change, into);
        const auto tracker = readProjectTracker(text.toStdString());
        QTEST(tracker ? QString() : tracker.error(), "problem");
        if (tracker) {
            QCOMPARE(tracker->projects.at(0).progress, 50);
            QCOMPARE(tracker->projects.at(0).workstreams.at(0).id, u"w"_s);
        }
    }

    void arraysAreNoTrackers() { QVERIFY(!readProjectTracker("[]")); }

    void cronJobsNeverFailTheDocument()
    {
        const auto tracker = readCronTracker(
            R"({"version":1,"updated":"u","jobs":[{},7,{"id":"j","name":3,"schedule":"every 1m",)"
            R"("status":"green","lastRun":null,"nextRun":"in 20m","payload":"p","enabled":false}]})");
        QVERIFY(tracker);
        QCOMPARE(tracker->jobs.size(), 3);
        for (const CronJobItem &odd : tracker->jobs.first(2)) {
            QVERIFY(!odd.id.isEmpty());
            QCOMPARE(odd, (CronJobItem{odd.id, u"Unnamed Job"_s, {}, u"idle"_s}));
        }
        QVERIFY(tracker->jobs.at(0).id != tracker->jobs.at(1).id);
        QCOMPARE(tracker->jobs.at(2),
                 (CronJobItem{u"j"_s, u"Unnamed Job"_s, u"every 1m"_s, u"green"_s, std::nullopt,
                              u"in 20m"_s, u"p"_s, false}));
        QCOMPARE(readCronTracker(R"({"version":1,"updated":""})").error(), u"jobs: missing"_s);
    }
};

QTEST_APPLESS_MAIN(TestDocuments)
#include "test_documents.moc"
