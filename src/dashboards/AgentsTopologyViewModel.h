#pragma once

#include "dashboards/AgentNode.h"
#include "dashboards/DashboardModel.h"
#include "dashboards/RecordListModel.h"

#include <QTimer>

#include <memory>

namespace ostrelle
{

// The agents as a topology, polled every five seconds for as long as the model lives. Main thread
// only.
class AgentsTopologyViewModel : public DashboardModel
{
    Q_OBJECT
    // The main node, then the children in the order in which they are shown. Roles: agentId, name,
    // status, detail, modelName, progressText (undefined when absent), colorName, defaultEmoji,
    // priority.
    Q_PROPERTY(QAbstractItemModel *nodeList READ nodeList CONSTANT)
    Q_PROPERTY(bool usingFallback READ usingFallback NOTIFY usingFallbackChanged BINDABLE
                   bindableUsingFallback)
    Q_PROPERTY(QString statusFilePath READ statusFilePath CONSTANT)

public:
    static constexpr std::chrono::seconds interval{5};

    explicit AgentsTopologyViewModel(QObject *parent = nullptr);

    // The main node, then the children in the order of their ids.
    const QList<AgentNode> &nodes() const;
    std::optional<AgentNode> mainNode() const;
    QList<AgentNode> childNodes() const;
    QAbstractItemModel *nodeList() { return &m_nodeList; }

    // True while no live agent is shown, only the placeholder.
    bool usingFallback() const { return m_usingFallback; }
    QBindable<bool> bindableUsingFallback() { return &m_usingFallback; }

    QString statusFilePath() const { return m_statusFilePath; }

    Q_INVOKABLE void load();

Q_SIGNALS:
    void nodesChanged();
    void usingFallbackChanged();

private:
    struct Topology;

    static Topology read(const QString &statusFilePath);
    void publish(const std::shared_ptr<const Topology> &topology);

    const QString m_statusFilePath;
    std::shared_ptr<const Topology> m_shown;
    RecordListModel<AgentNode> m_nodeList;
    QTimer m_timer;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AgentsTopologyViewModel, bool, m_usingFallback, true,
                                         &AgentsTopologyViewModel::usingFallbackChanged)
};

} // namespace ostrelle
