#pragma once

#include "settings/Preferences.h"

namespace ostrelle
{

// What a user has typed, without white space at its ends; the other where nothing is left of it.
QString typedOr(const QString &typed, const QString &otherwise);

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
