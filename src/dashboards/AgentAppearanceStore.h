#pragma once

#include <QString>

namespace ostrelle
{

// The user's own names and emojis for agents, in the user's preferences. Any thread.
class AgentAppearanceStore
{
public:
    AgentAppearanceStore() = delete;

    static QString name(const QString &id, const QString &fallback);
    static QString emoji(const QString &id, const QString &fallback);

    static void save(const QString &id, const QString &name, const QString &emoji);
    static void reset(const QString &id);
};

} // namespace ostrelle
