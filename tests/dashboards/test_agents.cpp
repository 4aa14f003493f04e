#include "dashboards/AgentVisualPreset.h"
#include "dashboards/AgentsTopologyViewModel.h"
#include "dashboards/DashboardHome.h"
#include "support/Rows.h"
#include "tracker/AgentStatus.h"

#include <QSignalSpy>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

QList<AgentNode> nodesOf(const std::string &agents)
{
    return makeNodes(readAgentEntries("{\"agents\":" + agents + "}").value_or(JsonObject()));
}

QStringList namesOf(const QList<AgentNode> &nodes)
{
    QStringList names;
    for (const AgentNode &node : nodes) {
        names.append(node.name);
    }
    return names;
}

QString describe(const AgentNode &node)
{
    return QStringList{node.id,
                       node.name,
                       node.status,
                       node.detail.value_or(u"-"_s),
                       node.progressText.value_or(u"-"_s),
                       colorName(node.color),
                       node.parentId.value_or(u"-"_s)}
        .join(u'|');
}

QByteArray documentOf(const QByteArray &agents)
{
    return "{\"agents\":" + agents + "}";
}

} // namespace

class TestAgents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nodes()
    {
        const auto nodes =
            nodesOf(R"({"zeta":{"status":"error","parent":"lead","progress":42.9,"activity":"a"},)"
                    R"("Main":{"status":"x"},"code-reviewer":7,"\ud83d\ude00":{},"\uff5e":{}})");
        QCOMPARE(describe(nodes.at(0)), u"main|Main|active|Primary orchestrator|-|tiffanyBlue|-"_s);
        QCOMPARE(describe(nodes.at(1)), u"code-reviewer|Code-Reviewer|idle|-|-|pink|main"_s);
        QCOMPARE(describe(nodes.at(2)), u"zeta|Zeta|error|a|42%|purple|lead"_s);
        // Code points, not code units.
        QCOMPARE(namesOf(nodes.sliced(3)), (QStringList{u"～"_s, u"😀"_s}));
        QCOMPARE(namesOf(nodesOf(R"({"MAIN":1})")), QStringList{u"Main"_s});
        const auto ten =
            nodesOf(R"({"1":{},"2":{},"3":{},"4":{},"5":{},"6":{},"7":{},"8":{},"9":{}})");
        QCOMPARE(ten.at(8).color, NamedColor::Indigo);
        QCOMPARE(ten.at(9).color, ten.at(1).color);
    }

    void childrenAreSortedByPriorityAndName()
    {
        const auto nodes = nodesOf(
            R"({"a":{"status":"odd"},"b1":{"status":"error"},"b2":{"status":"FAILED"},)"
            R"("b3":{"status":"offline"},"b4":{"status":"stopped"},"c1":{"status":"Idle"},)"
            R"("c2":{"status":"pending"},"c3":{"status":"starting"},"c4":{"status":"warning"},)"
            R"("d1":{"status":"active"},"D2":{"status":"busy"},"d3":{"status":"processing"},)"
            R"("d4":{"state":"Running"},"d5":{"status":"working"}})");
        QCOMPARE(namesOf(sortedChildren(nodes)).join(u' '),
                 u"D1 D2 D3 D4 D5 C1 C2 C3 C4 B1 B2 B3 B4 A"_s);
    }

    void presets()
    {
        QStringList emojis;
        for (const QString &id :
             u"MAIN mainly code-search Code-Reviewer devops camera content guide infra tester"_s
                 .split(u' ')) {
            emojis.append(AgentVisualPreset::forAgent(id, NamedColor::Mint).emoji);
        }
        QCOMPARE(emojis.join(u' '), u"🧠 ✨ 🔎 🧑💻 🧑💻 👁️ ✍️ 🎨 🛠️ 🧪"_s);
        const auto custom = AgentVisualPreset::forAgent(u"customer-support"_s, NamedColor::Mint);
        QCOMPARE(custom.role, AgentVisualPreset::Role::Custom);
        QCOMPARE(custom.color, NamedColor::Mint);
    }

    void statusWordsHaveTheirColours()
    {
        QCOMPARE(statusColor(u"IDLE"_s), NamedColor::Yellow); // in any letter case
        QCOMPARE(statusColor(u"done"_s), NamedColor::Grey);
    }

    void showsWhatTheFileSays_data()
    {
        const Rows<QByteArray, QStringList, bool, QString> row("file", "names", "fallback",
                                                               "error");
        row("two agents", documentOf(R"({"b":{"status":"idle"},"a":{}})"),
            QStringList{u"Main"_s, u"A"_s, u"B"_s}, false, {});
        row("no agents", documentOf("{}"), QStringList{u"Main"_s}, true, {});
        row("missing", {}, QStringList{u"Main"_s}, true,
            u"Gateway not reachable — check connection and ensure Duskrell "
            "is running on the remote device."_s);
        row("not JSON", "{", QStringList{u"Main"_s}, true,
            u"Agent data unreadable: JSON document ended early in the middle of an object or array."_s);
    }

    void showsWhatTheFileSays()
    {
        QFETCH(QByteArray, file);
        const DashboardHome home;
        if (!file.isNull()) {
            home.write(u"status"_s, file);
        }
        AgentsTopologyViewModel model(home.settings());
        QCOMPARE(model.statusFilePath(), home.path(u"status"_s));
        QVERIFY(model.isLoading() && model.usingFallback());
        QCOMPARE(model.mainNode()->status, u"idle"_s);
        QTRY_VERIFY(!model.isLoading());
        QTEST(namesOf(model.nodes()), "names");
        QTEST(model.usingFallback(), "fallback");
        QTEST(model.errorMessage(), "error");
    }

    void pollsAndTellsWhatChanged()
    {
        const DashboardHome home;
        home.write(u"status"_s, documentOf(R"({"a":{"status":"busy"},"b":{"status":"idle"}})"));
        AgentsTopologyViewModel model(home.settings(), 10ms);
        QSignalSpy nodes(&model, &AgentsTopologyViewModel::nodesChanged);
        QSignalSpy loads(&model, &AgentsTopologyViewModel::isLoadingChanged);
        QTRY_VERIFY(loads.count() >= 6);
        QCOMPARE(nodes.count(), 1);

        home.write(u"status"_s, documentOf(R"({"a":{"status":"error"},"b":{"status":"idle"}})"));
        QTRY_COMPARE(nodes.count(), 2);
        QCOMPARE(namesOf(model.childNodes()), (QStringList{u"B"_s, u"A"_s}));
        QCOMPARE(namesOf(model.nodes()), (QStringList{u"Main"_s, u"A"_s, u"B"_s}));
    }
};

QTEST_GUILESS_MAIN(TestAgents)
#include "test_agents.moc"
