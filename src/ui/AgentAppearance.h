#pragma once

#include "dashboards/AgentsTopologyViewModel.h"

#include <QObject>
#include <QProperty>
#include <QtQml/qqml.h>

namespace ostrelle
{

// The name and the emoji under which an agent is shown: the user's own, else the fallbacks. They
// are read when they are first asked for, and again whenever `refreshKey` changes. Main thread
// only.
class AgentAppearance : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostrelle::AgentsTopologyViewModel *viewModel READ viewModel WRITE setViewModel NOTIFY
                   viewModelChanged REQUIRED)
    Q_PROPERTY(QString agentId READ agentId WRITE setAgentId NOTIFY agentIdChanged REQUIRED)
    Q_PROPERTY(QString fallbackName READ fallbackName WRITE setFallbackName NOTIFY
                   fallbackNameChanged REQUIRED)
    Q_PROPERTY(QString fallbackEmoji READ fallbackEmoji WRITE setFallbackEmoji NOTIFY
                   fallbackEmojiChanged REQUIRED)
    Q_PROPERTY(int refreshKey READ refreshKey WRITE setRefreshKey NOTIFY refreshKeyChanged)
    Q_PROPERTY(QString name READ name NOTIFY nameChanged)
    Q_PROPERTY(QString emoji READ emoji NOTIFY emojiChanged)

public:
    explicit AgentAppearance(QObject *parent = nullptr);

    AgentsTopologyViewModel *viewModel() const { return m_viewModel; }
    void setViewModel(AgentsTopologyViewModel *viewModel) { m_viewModel = viewModel; }
    QString agentId() const { return m_agentId; }
    void setAgentId(const QString &id) { m_agentId = id; }
    QString fallbackName() const { return m_fallbackName; }
    void setFallbackName(const QString &name) { m_fallbackName = name; }
    QString fallbackEmoji() const { return m_fallbackEmoji; }
    void setFallbackEmoji(const QString &emoji) { m_fallbackEmoji = emoji; }
    int refreshKey() const { return m_refreshKey; }
    void setRefreshKey(int key) { m_refreshKey = key; }

    QString name() const { return m_name; }
    QString emoji() const { return m_emoji; }

    // Stores what the user has typed, without white space at its ends; the fallback where nothing
    // is left of it.
    Q_INVOKABLE void save(const QString &name, const QString &emoji);
    Q_INVOKABLE void reset();

Q_SIGNALS:
    void viewModelChanged();
    void agentIdChanged();
    void fallbackNameChanged();
    void fallbackEmojiChanged();
    void refreshKeyChanged();
    void nameChanged();
    void emojiChanged();

private:
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AgentAppearance, ostrelle::AgentsTopologyViewModel *,
                                         m_viewModel, nullptr, &AgentAppearance::viewModelChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AgentAppearance, QString, m_agentId,
                               &AgentAppearance::agentIdChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AgentAppearance, QString, m_fallbackName,
                               &AgentAppearance::fallbackNameChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AgentAppearance, QString, m_fallbackEmoji,
                               &AgentAppearance::fallbackEmojiChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AgentAppearance, int, m_refreshKey, 0,
                                         &AgentAppearance::refreshKeyChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AgentAppearance, QString, m_name, &AgentAppearance::nameChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AgentAppearance, QString, m_emoji, &AgentAppearance::emojiChanged)
};

} // namespace ostrelle
