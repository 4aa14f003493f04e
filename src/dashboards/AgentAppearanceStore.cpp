#include "dashboards/AgentAppearanceStore.h"

#include "settings/Preferences.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// A slash in a key starts a group, and several in a row count as one: two agents would share a key.
QString asKeyPart(QString id)
{
    return id.replace(u'%', u"%25"_s).replace(u'/', u"%2F"_s).replace(u'\\', u"%5C"_s);
}

QString nameKey(const QString &id)
{
    return u"agents.customName."_s + asKeyPart(id);
}

QString emojiKey(const QString &id)
{
    return u"agents.customEmoji."_s + asKeyPart(id);
}

} // namespace

QString AgentAppearanceStore::name(const QString &id, const QString &fallback)
{
    return Preferences().string(nameKey(id)).value_or(fallback);
}

QString AgentAppearanceStore::emoji(const QString &id, const QString &fallback)
{
    return Preferences().string(emojiKey(id)).value_or(fallback);
}

void AgentAppearanceStore::save(const QString &id, const QString &name, const QString &emoji)
{
    Preferences preferences;
    preferences.set(nameKey(id), name);
    preferences.set(emojiKey(id), emoji);
}

void AgentAppearanceStore::reset(const QString &id)
{
    Preferences preferences;
    preferences.remove(nameKey(id));
    preferences.remove(emojiKey(id));
}

} // namespace ostrelle
