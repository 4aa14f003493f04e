#include "dashboards/AgentNode.h"

#include "core/Capitalize.h"
#include "core/NameOrder.h"
#include "dashboards/AgentVisualPreset.h"
#include "dashboards/RecordListModel.h"
#include "tracker/AgentStatus.h"

#include <QHash>

#include <array>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::array childColors = {NamedColor::Pink,  NamedColor::Purple, NamedColor::Teal,
                                    NamedColor::Green, NamedColor::Yellow, NamedColor::Blue,
                                    NamedColor::Mint,  NamedColor::Indigo};

constexpr auto mainId = "main"_L1;

AgentNode mainNodeOf(const JsonObject &agents)
{
    return {.id = mainId,
            .name = u"Main"_s,
            .status = agents.isEmpty() ? u"idle"_s : u"active"_s,
            .detail = u"Primary orchestrator"_s};
}

AgentNode childNode(const TopologyEntry &entry, NamedColor color)
{
    return {.id = entry.id,
            .name = capitalizeWords(entry.id),
            .status = entry.status,
            .detail = entry.detail,
            .model = entry.model,
            .progressText = entry.progressText,
            .color = color,
            .parentId = entry.parentId};
}

bool isCalledMain(const JsonMember &entry)
{
    return QString::fromStdString(entry.name).toLower() == mainId;
}

// In code-point order, which is the order of their UTF-8 bytes.
std::vector<const JsonMember *> childEntries(const JsonObject &agents)
{
    std::vector<const JsonMember *> entries;
    for (const JsonMember &entry : agents.members()) {
        if (!isCalledMain(entry)) {
            entries.push_back(&entry);
        }
    }
    std::ranges::sort(entries, {},
                      [](const JsonMember *entry) { return std::string_view(entry->name); });
    return entries;
}

} // namespace

int AgentNode::priority() const
{
    static const QHash<QString, int> priorities = {
        {u"processing"_s, 0}, {u"busy"_s, 0},     {u"working"_s, 0}, {u"active"_s, 0},
        {u"running"_s, 0},    {u"starting"_s, 1}, {u"pending"_s, 1}, {u"warning"_s, 1},
        {u"idle"_s, 1},       {u"stopped"_s, 2},  {u"offline"_s, 2}, {u"error"_s, 2},
        {u"failed"_s, 2},
    };
    return priorities.value(status.toLower(), 3);
}

QString AgentNode::defaultEmoji() const
{
    return AgentVisualPreset::forAgent(id, color).emoji;
}

bool AgentNode::isMain() const
{
    return id == mainId;
}

QVariant AgentNode::detailOrUndefined() const
{
    return orUndefined(detail);
}

QVariant AgentNode::modelOrUndefined() const
{
    return orUndefined(model);
}

QVariant AgentNode::progressTextOrUndefined() const
{
    return orUndefined(progressText);
}

QList<AgentNode> makeNodes(const JsonObject &agents)
{
    QList<AgentNode> nodes{mainNodeOf(agents)};
    for (std::size_t i = 0; const JsonMember *entry : childEntries(agents)) {
        nodes.append(childNode(readTopologyEntry(*entry), childColors[i % childColors.size()]));
        ++i;
    }
    return nodes;
}

QList<AgentNode> sortedChildren(const QList<AgentNode> &nodes)
{
    QList<AgentNode> children;
    std::ranges::copy_if(nodes, std::back_inserter(children),
                         [](const AgentNode &node) { return !node.isMain(); });
    const NameOrder order;
    return stablySorted(children, [&](const AgentNode &a, const AgentNode &b) {
        const int difference = a.priority() - b.priority();
        return difference != 0 ? difference : order.compare(a.name, b.name);
    });
}

} // namespace ostrelle

#include "moc_AgentNode.cpp"
