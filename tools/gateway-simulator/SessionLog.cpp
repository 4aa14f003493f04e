#include "SessionLog.h"

#include "GatewayFiles.h"
#include "platform/Files.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>

namespace ostrelle::simulator::sessionlog
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 turnEveryMs = 20'000;
constexpr qint64 backlogMs = 900'000;

constexpr auto heartbeat =
    "Read HEARTBEAT.md if it exists. Answer HEARTBEAT_OK when nothing is due."_L1;

QString timestamp(const World &world)
{
    return QDateTime::fromMSecsSinceEpoch(world.nowMs, Qt::UTC).toString(Qt::ISODateWithMs);
}

QString logIdentity(const World &world)
{
    return world.identity(u"log/"_s + timestamp(world).first(10));
}

QString logPath(const World &world)
{
    return gatewayPath(u"agents/main/sessions/%1.jsonl"_s.arg(logIdentity(world)));
}

void appendRecord(const World &world, const QString &type, QJsonObject record)
{
    record[u"type"_s] = type;
    record[u"timestamp"_s] = timestamp(world);
    appendLine(logPath(world), QJsonDocument(record).toJson(QJsonDocument::Compact));
}

void appendMessage(const World &world, const QString &role, const QJsonValue &content)
{
    const QJsonObject message = {{u"role"_s, role}, {u"content"_s, content}};
    appendRecord(world, u"message"_s, {{u"message"_s, message}});
}

QJsonObject part(const QString &type, const QString &text)
{
    return {{u"type"_s, type}, {type, text}};
}

void playTurn(const World &world)
{
    if (!fileExists(logPath(world))) {
        appendRecord(world, u"session"_s, {{u"id"_s, logIdentity(world)}});
    }
    const quint64 dice = world.dice(u"turn/"_s + timestamp(world));
    const QJsonArray talk = scripted(u"talk");
    const QJsonValue chosen = talk.at(static_cast<qsizetype>(dice / 6) % talk.size());
    switch (dice % 6) {
    case 0:
        return appendExchange(world, heartbeat, dice % 4 == 0 ? u"HEARTBEAT_OK"_s : u"NO_REPLY"_s);
    case 1:
        appendRecord(world, u"note"_s, {{u"note"_s, u"Looked at the list of tasks."_s}});
        return appendMessage(world, u"tool"_s, QJsonArray{part(u"text"_s, u"todo.md"_s)});
    default:
        return appendExchange(world, chosen[0].toString(), chosen[1].toString());
    }
}

} // namespace

void appendExchange(const World &world, const QString &question, const QString &answer)
{
    // A user's text is stored as it is, the agent's in parts: readers meet both forms.
    appendMessage(world, u"user"_s, question);
    appendMessage(world, u"assistant"_s,
                  QJsonArray{part(u"thinking"_s, u"…"_s), part(u"text"_s, answer)});
}

void begin(const World &world)
{
    if (!fileExists(logPath(world))) {
        play(world, 0);
    }
}

void play(const World &world, qint64 sinceMs)
{
    const qint64 from = qMax(sinceMs, world.nowMs - backlogMs);
    World turn = world;
    turn.nowMs = from - from % turnEveryMs + turnEveryMs;
    for (; turn.nowMs <= world.nowMs; turn.nowMs += turnEveryMs) {
        playTurn(turn);
    }
}

} // namespace ostrelle::simulator::sessionlog
