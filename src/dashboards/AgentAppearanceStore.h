#pragma once

#include "settings/Preferences.h"

namespace ostrelle
{

// The user's own names and emojis for agents, in the user's preferences. Any thread.
class AgentAppearanceStore
{
public:
    explicit AgentAppearanceStore(std::shared_ptr<Preferences> preferences);

    QString name(const QString &id, const QString &fallback) const;
    QString emoji(const QString &id, const QString &fallback) const;

    void save(const QString &id, const QString &name, const QString &emoji);
    void reset(const QString &id);

private:
    std::shared_ptr<Preferences> m_preferences;
};

} // namespace ostrelle
