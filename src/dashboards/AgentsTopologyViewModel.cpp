#include "dashboards/AgentsTopologyViewModel.h"

#include "core/ExpandPath.h"
#include "tracker/AgentStatus.h"
#include "tracker/TrackerDocument.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

// What one load found, ready to be shown.
struct AgentsTopologyViewModel::Topology {
    explicit Topology(const JsonObject &agents, QString problem = {})
        : nodes(makeNodes(agents))
        , children(sortedChildren(nodes))
        , isFallback(agents.isEmpty())
        , errorMessage(std::move(problem))
    {
    }

    QList<AgentNode> nodes;
    QList<AgentNode> children;
    bool isFallback;
    QString errorMessage;
};

AgentsTopologyViewModel::AgentsTopologyViewModel(Settings settings,
                                                 std::chrono::milliseconds interval,
                                                 QObject *parent)
    : DashboardModel(parent)
    , m_settings(std::move(settings))
    , m_statusFilePath(expandPath(m_settings.config->current().paths.statusFile))
    , m_shown(std::make_shared<const Topology>(JsonObject()))
{
    load();
    connect(&m_timer, &QTimer::timeout, this, &AgentsTopologyViewModel::load);
    m_timer.start(interval);
}

const QList<AgentNode> &AgentsTopologyViewModel::nodes() const
{
    return m_shown->nodes;
}

std::optional<AgentNode> AgentsTopologyViewModel::mainNode() const
{
    const auto node = std::ranges::find_if(nodes(), &AgentNode::isMain);
    return node != nodes().end() ? std::optional(*node) : std::nullopt;
}

const QList<AgentNode> &AgentsTopologyViewModel::childNodes() const
{
    return m_shown->children;
}

void AgentsTopologyViewModel::load()
{
    startLoad([path = m_statusFilePath, settings = m_settings] { return read(path, settings); },
              [this](const auto &topology) { publish(topology); });
}

AgentsTopologyViewModel::Topology AgentsTopologyViewModel::read(const QString &statusFilePath,
                                                                const Settings &settings)
{
    const auto document =
        obtainDocument(u"/status"_s, statusFilePath, settings.config->snapshot(), *settings.tokens);
    const auto agents = readDocument(document, u"Agent data unreadable: "_s, readAgentEntries);
    return agents ? Topology(*agents) : Topology({}, agents.error());
}

void AgentsTopologyViewModel::publish(const std::shared_ptr<const Topology> &topology)
{
    const auto before = std::exchange(m_shown, topology);
    if (before->nodes != topology->nodes) {
        Q_EMIT nodesChanged();
    }
    m_usingFallback = topology->isFallback;
    setErrorMessage(topology->errorMessage);
}

} // namespace ostrelle

#include "moc_AgentsTopologyViewModel.cpp"
