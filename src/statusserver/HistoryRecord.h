#pragma once

#include <QString>

#include <optional>
#include <simdjson.h>
#include <string_view>

namespace ostrelle
{

// One message of a chat session as it is published.
struct HistoryRecord {
    QString role; // "user" or "assistant"
    QString content;
    QString timestamp; // as logged; empty when the line has none
};

// Reads the lines of a session log; keeps its memory from one line to the next.
class HistoryRecordReader
{
public:
    // The record of a line, or nothing when the line does not count: not JSON, not a message, of
    // another role, without text, or part of the heartbeat chatter. At least SIMDJSON_PADDING
    // readable bytes must follow the line.
    std::optional<HistoryRecord> read(std::string_view line);

private:
    simdjson::simdjson_result<simdjson::dom::element> parse(std::string_view line);

    simdjson::dom::parser m_parser;
};

} // namespace ostrelle
