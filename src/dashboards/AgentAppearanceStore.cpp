#include "dashboards/AgentAppearanceStore.h"

#include <utility>

namespace ostrelle
{

QString typedOr(const QString &typed, const QString &otherwise)
{
    const QString trimmed = typed.trimmed();
    return trimmed.isEmpty() ? otherwise : trimmed;
}

AgentAppearanceStore::AgentAppearanceStore(std::shared_ptr<Preferences> preferences)
    : m_preferences(std::move(preferences))
{
}

QString AgentAppearanceStore::name(const QString &id, const QString &fallback) const
{
    return m_preferences->value(preference::customAgentName(id, fallback));
}

QString AgentAppearanceStore::emoji(const QString &id, const QString &fallback) const
{
    return m_preferences->value(preference::customAgentEmoji(id, fallback));
}

void AgentAppearanceStore::save(const QString &id, const QString &name, const QString &emoji)
{
    m_preferences->set(preference::customAgentName(id), name);
    m_preferences->set(preference::customAgentEmoji(id), emoji);
}

void AgentAppearanceStore::reset(const QString &id)
{
    m_preferences->remove(preference::customAgentName(id));
    m_preferences->remove(preference::customAgentEmoji(id));
}

} // namespace ostrelle
