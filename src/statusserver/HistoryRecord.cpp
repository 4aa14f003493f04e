#include "statusserver/HistoryRecord.h"

#include <QStringList>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The text parts, a line each; empty when anything in the array is not an object.
QString joinedParts(const JsonArray &parts)
{
    QStringList texts;
    for (const JsonValue &part : parts) {
        if (part.object() == nullptr) {
            return {};
        }
        const auto text = part["text"].string();
        if (text && part["type"].isString("text")) {
            texts.append(*text);
        }
    }
    return texts.join(u'\n');
}

QString textOf(const JsonValue &content)
{
    const JsonArray *parts = content.array();
    return parts != nullptr ? joinedParts(*parts) : content.string().value_or(QString());
}

// What the gateway and its agent say to each other when nobody is there.
bool isChatter(const QString &text)
{
    return text.contains("Read HEARTBEAT.md if it exists"_L1) || text == "HEARTBEAT_OK"_L1 ||
           text == "NO_REPLY"_L1;
}

} // namespace

std::optional<HistoryRecord> readHistoryRecord(JsonReader &reader, std::string_view line)
{
    const JsonValue entry = reader.read(line).value_or(JsonValue());
    const JsonValue &message = entry["message"];
    const JsonValue &role = message["role"];
    if (!entry["type"].isString("message") ||
        (!role.isString("user") && !role.isString("assistant"))) {
        return std::nullopt;
    }
    const QString text = textOf(message["content"]).trimmed();
    if (text.isEmpty() || isChatter(text)) {
        return std::nullopt;
    }
    return HistoryRecord{.role = *role.string(),
                         .content = text,
                         .timestamp = entry["timestamp"].string().value_or(QString())};
}

} // namespace ostrelle
