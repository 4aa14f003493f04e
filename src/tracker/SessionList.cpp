#include "tracker/SessionList.h"

#include "core/Capitalize.h"
#include "core/Json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <map>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The members of a session that matter here.
struct Session {
    explicit Session(const JsonObject &object)
        : key(object["key"].string().value_or(QString()))
        , agentId(object["agentId"].string().value_or(u"main"_s))
        , model(object["model"].string())
        , label(object["label"].string())
    {
    }

    bool isRun() const { return key.contains(":run:"_L1); }
    bool isMain() const { return key == "agent:"_L1 + agentId + ":main"_L1; }

    QString key;
    QString agentId;
    std::optional<QString> model;
    std::optional<QString> label;
};

struct Entry {
    QString id;
    QString name;
    QString status;
    std::optional<QString> detail;
};

QString displayName(QString identifier)
{
    return capitalizeWords(identifier.replace(u'-', u' '));
}

// Characters as a reader sees them: an emoji is never cut in two.
QString firstCharacters(const QString &text, int count)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (int i = 0; i < count; ++i) {
        finder.toNextBoundary();
    }
    return text.left(finder.position()); // all of it when that is behind the end, which is -1
}

Entry subAgent(const Session &session)
{
    constexpr auto marker = ":subagent:"_L1;
    if (session.label) {
        return {*session.label, displayName(*session.label), u"processing"_s, session.label};
    }
    const qsizetype start = session.key.lastIndexOf(marker) + marker.size();
    return {u"subagent-"_s + firstCharacters(session.key.sliced(start), 8), u"Sub-Agent"_s,
            u"processing"_s, u"Sub-agent task"_s};
}

Entry classify(const Session &session)
{
    if (session.key.contains(":subagent:"_L1)) {
        return subAgent(session);
    }
    if (session.key.contains(":cron:"_L1)) {
        return {u"cron"_s, u"Cron Runner"_s, u"processing"_s, u"Running cron job"_s};
    }
    return {session.agentId, displayName(session.agentId), u"active"_s,
            session.isMain() ? std::optional(u"Main session"_s) : std::nullopt};
}

QJsonObject encode(const Entry &entry, const Session &session, const QString &updated)
{
    QJsonObject object{
        {"name"_L1, entry.name},
        {"status"_L1, entry.status},
        {"updated"_L1, updated},
        {"parent"_L1, entry.id == session.agentId ? QJsonValue() : QJsonValue(u"main"_s)}};
    if (session.model) {
        object.insert("model"_L1, *session.model);
    }
    if (entry.detail) {
        object.insert("detail"_L1, *entry.detail);
    }
    return object;
}

QJsonObject idlePlaceholder(const QString &updated)
{
    return {{"name"_L1, u"Main"_s},
            {"status"_L1, u"idle"_s},
            {"detail"_L1, u"No active sessions"_s},
            {"updated"_L1, updated}};
}

// Sorted, because QJsonObject is slow to take members that do not come in order.
using Entries = std::map<QString, QJsonObject>;

// When several sessions have the same entry, the agent's main session wins, else the first.
void add(Entries &entries, const Session &session, const QString &updated)
{
    const Entry entry = classify(session);
    if (session.isMain() || !entries.contains(entry.id)) {
        entries.insert_or_assign(entry.id, encode(entry, session, updated));
    }
}

QByteArray documentOf(const Entries &entries)
{
    QJsonObject agents;
    for (const auto &[id, entry] : entries) {
        agents.insert(id, entry);
    }
    return QJsonDocument(QJsonObject{{"agents"_L1, agents}, {"completions"_L1, QJsonArray()}})
        .toJson(QJsonDocument::Indented);
}

} // namespace

std::optional<QByteArray> agentStatusFromSessions(std::string_view output, const QDateTime &now)
{
    const auto document = parseJson(output);
    const JsonArray *sessions = document ? objectsIn(*document, "sessions") : nullptr;
    if (sessions == nullptr) {
        return std::nullopt;
    }
    const QString updated = QLocale().toString(now, u"h:mm Ap"_s);
    Entries entries;
    for (const JsonValue &value : *sessions) {
        if (const Session session(*value.object()); !session.isRun()) {
            add(entries, session, updated);
        }
    }
    if (entries.empty()) {
        entries.emplace(u"main"_s, idlePlaceholder(updated));
    }
    return documentOf(entries);
}

} // namespace ostrelle
