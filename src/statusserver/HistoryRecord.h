#pragma once

#include "core/Json.h"

#include <QString>

#include <optional>
#include <string_view>

namespace ostrelle
{

// One message of a chat session as it is published.
struct HistoryRecord {
    QString role; // "user" or "assistant"
    QString content;
    QString timestamp; // as logged; empty when the line has none
};

// The record of a line of a session log, or nothing when the line does not count: not JSON, not a
// message, of another role, without text, or part of the heartbeat chatter.
std::optional<HistoryRecord> readHistoryRecord(JsonReader &reader, std::string_view line);

} // namespace ostrelle
