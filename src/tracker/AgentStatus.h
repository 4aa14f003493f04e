#pragma once

#include "core/Json.h"

#include <QList>
#include <QUuid>

namespace ostrelle
{

// One entry of the agent status document as the projects dashboard lists it.
struct AgentStatusItem {
    QString id; // the entry's member name; its identity in lists
    QString name;
    QString status;
    std::optional<QString> detail = std::nullopt;
    std::optional<QString> model = std::nullopt;
    std::optional<QString> updated = std::nullopt;      // display text
    std::optional<QString> progressText = std::nullopt; // for instance "42%"
    JsonObject raw;                                     // the whole entry as read

    friend bool operator==(const AgentStatusItem &, const AgentStatusItem &) = default;
};

// A piece of finished work.
struct AgentCompletionItem {
    QString agent;
    QString text;
    std::optional<QString> ts = std::nullopt; // display text
    // Identity in lists. A new one is made each time the record is read, so it does not count when
    // records are compared.
    QUuid id = QUuid::createUuid();

    friend bool operator==(const AgentCompletionItem &a, const AgentCompletionItem &b)
    {
        return a.agent == b.agent && a.text == b.text && a.ts == b.ts;
    }
};

struct AgentStatusPayload {
    QList<AgentStatusItem> agents; // in document order
    QList<AgentCompletionItem> completions;
};

// One entry of the agent status document as the topology draws it.
struct TopologyEntry {
    QString id;
    QString status;
    std::optional<QString> detail = std::nullopt;
    std::optional<QString> model = std::nullopt;
    std::optional<QString> progressText = std::nullopt;
    QString parentId;
};

// Both readers fail for a text that is no JSON and for more than 100,000 agents or completions;
// entries are skipped or filled with fallbacks.
std::expected<AgentStatusPayload, QString> readAgentStatus(std::string_view text);

// The document's "agents" object; an empty one when that is missing or something else.
std::expected<JsonObject, QString> readAgentEntries(std::string_view text);

// A value that is no object counts as an empty one.
TopologyEntry readTopologyEntry(const JsonMember &entry);

} // namespace ostrelle
