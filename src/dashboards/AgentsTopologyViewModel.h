#pragma once

#include "dashboards/AgentAppearanceStore.h"
#include "dashboards/AgentNode.h"
#include "dashboards/DashboardModel.h"

#include <QTimer>

#include <memory>

namespace ostrelle
{

// The agents as a tree below the main one. Polls for as long as it lives. Main thread only.
class AgentsTopologyViewModel : public DashboardModel
{
    Q_OBJECT
    Q_PROPERTY(bool usingFallback READ usingFallback NOTIFY usingFallbackChanged)
    Q_PROPERTY(QString statusFilePath READ statusFilePath CONSTANT)

public:
    explicit AgentsTopologyViewModel(Settings settings,
                                     std::chrono::milliseconds interval = std::chrono::seconds(5),
                                     QObject *parent = nullptr);

    // The main node, then the children in the order of their ids.
    const QList<AgentNode> &nodes() const;
    std::optional<AgentNode> mainNode() const;
    const QList<AgentNode> &childNodes() const; // in the order in which they are shown

    // True while no live agent is shown, only the placeholder.
    bool usingFallback() const { return m_usingFallback; }

    QString statusFilePath() const { return m_statusFilePath; }

    // What the user calls the agents.
    AgentAppearanceStore appearances() const
    {
        return AgentAppearanceStore(m_settings.preferences);
    }

    Q_INVOKABLE void load();

Q_SIGNALS:
    void nodesChanged();
    void usingFallbackChanged();

private:
    struct Topology;

    static Topology read(const QString &statusFilePath, const Settings &settings);
    void publish(const std::shared_ptr<const Topology> &topology);

    const Settings m_settings;
    const QString m_statusFilePath;
    std::shared_ptr<const Topology> m_shown;
    QTimer m_timer;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AgentsTopologyViewModel, bool, m_usingFallback, true,
                                         &AgentsTopologyViewModel::usingFallbackChanged)
};

} // namespace ostrelle
