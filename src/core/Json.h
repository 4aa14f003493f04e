#pragma once

#include "core/JsonValue.h"

#include <QString>

#include <expected>
#include <memory>
#include <string_view>

namespace ostrelle
{

// Parses whole documents, strictly, and says what is wrong with one that is none. A byte order mark
// is skipped. Numbers beyond 64 bits become doubles, and half of a surrogate pair becomes U+FFFD:
// simdjson alone refuses the whole document for either. Documents that nest deeper than 512 levels
// or hold more than four million values are refused.
class JsonReader
{
public:
    JsonReader();
    ~JsonReader();
    Q_DISABLE_COPY_MOVE(JsonReader)

    // Keeps its memory for the next text, for those who read many.
    std::expected<JsonValue, QString> read(std::string_view text);

private:
    struct Memory;
    const std::unique_ptr<Memory> m_memory;
};

// Reads a single text in the same way.
std::expected<JsonValue, QString> parseJson(std::string_view text);

} // namespace ostrelle
