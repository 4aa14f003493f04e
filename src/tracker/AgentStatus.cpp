#include "tracker/AgentStatus.h"

#include "tracker/RecordReader.h"

#include <cmath>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The member names that writers of the document use for the same thing, in order of preference. The
// list and the topology prefer different ones.
using Names = std::string_view[];
constexpr Names listStatus = {"status", "state", "phase"};
constexpr Names topologyStatus = {"status", "state"};
constexpr Names listDetail = {"detail", "task", "message", "summary", "note"};
constexpr Names topologyDetail = {"activity", "detail", "task", "message"};
constexpr Names updatedText = {"updated", "updatedAt", "ts"};
constexpr Names parentId = {"parent", "spawnedBy"};
constexpr Names completionText = {"text", "message", "summary"};

std::optional<QString> progressText(const JsonObject &entry)
{
    const JsonValue &progress = entry["progress"];
    if (const auto percent = progress.integer()) {
        return QString::number(*percent) + u'%';
    }
    if (const auto percent = progress.number(); percent && std::abs(*percent) < 0x1p63) {
        return QString::number(static_cast<qint64>(*percent)) + u'%';
    }
    return entry["progressText"].string();
}

AgentStatusItem readItem(const QString &id, const JsonObject &entry)
{
    return {.id = id,
            .name = entry["name"].string().value_or(id),
            .status = entry.firstString(listStatus).value_or(u"unknown"_s),
            .detail = entry.firstString(listDetail),
            .model = entry["model"].string(),
            .updated = entry.firstString(updatedText),
            .progressText = progressText(entry),
            .raw = entry};
}

QList<AgentStatusItem> readItems(const JsonObject &entries)
{
    QList<AgentStatusItem> items;
    for (const JsonMember &entry : entries.members()) {
        if (const JsonObject *object = entry.value.object()) {
            items.append(readItem(QString::fromStdString(entry.name), *object));
        }
    }
    return items;
}

// The newest come first. One element that is no object makes the whole list unreadable.
QList<AgentCompletionItem> readCompletions(const JsonArray &elements)
{
    QList<AgentCompletionItem> completions;
    for (const JsonValue &element : elements) {
        const JsonObject *completion = element.object();
        if (completion == nullptr) {
            return {};
        }
        if (completions.size() == static_cast<qsizetype>(mostRecords)) {
            continue;
        }
        completions.append(
            {.agent = (*completion)["agent"].string().value_or(u"agent"_s),
             .text = completion->firstString(completionText).value_or(u"Completed"_s),
             .ts = (*completion)["ts"].string()});
    }
    return completions;
}

QString tooManyAgents()
{
    return u"agents: more than %1"_s.arg(mostRecords);
}

JsonObject objectOrEmpty(const JsonValue &value)
{
    return value.object() != nullptr ? *value.object() : JsonObject();
}

} // namespace

std::expected<AgentStatusPayload, QString> readAgentStatus(std::string_view text)
{
    const auto document = parseJson(text);
    if (!document) {
        return std::unexpected(document.error());
    }
    AgentStatusPayload payload;
    if (const JsonObject *root = document->object()) {
        if (const JsonObject *agents = (*root)["agents"].object()) {
            if (agents->members().size() > mostRecords) {
                return std::unexpected(tooManyAgents());
            }
            payload.agents = readItems(*agents);
        }
        if (const JsonArray *completions = (*root)["completions"].array()) {
            payload.completions = readCompletions(*completions);
        }
    }
    return payload;
}

std::expected<JsonObject, QString> readAgentEntries(std::string_view text)
{
    const auto document = parseJson(text);
    if (!document) {
        return std::unexpected(document.error());
    }
    auto entries = objectOrEmpty(objectOrEmpty(*document)["agents"]);
    if (entries.members().size() > mostRecords) {
        return std::unexpected(tooManyAgents());
    }
    return entries;
}

TopologyEntry readTopologyEntry(const JsonMember &entry)
{
    const JsonObject object = objectOrEmpty(entry.value);
    return {.id = QString::fromStdString(entry.name),
            .status = object.firstString(topologyStatus).value_or(u"idle"_s),
            .detail = object.firstString(topologyDetail),
            .model = object["model"].string(),
            .progressText = progressText(object),
            .parentId = object.firstString(parentId).value_or(u"main"_s)};
}

} // namespace ostrelle
