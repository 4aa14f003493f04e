#include "core/Json.h"

#include <algorithm>
#include <charconv>
#include <simdjson.h>

namespace ostrelle
{

namespace ondemand = simdjson::ondemand;
using simdjson::error_code;

namespace
{

constexpr int maxDepth = 512;
constexpr std::size_t maxValues = std::size_t{4} * 1024 * 1024;

// Builds a tree of values. Every token is read, so that a document is valid when this succeeds.
// Nodes are the document itself (a lone scalar can only be read there) or values in it.
class TreeReader
{
public:
    template<typename Node>
    error_code read(Node &node, JsonValue::Content &content)
    {
        if (m_values++ == maxValues) {
            return simdjson::CAPACITY;
        }
        ondemand::json_type type{};
        if (const auto error = node.type().get(type)) {
            return error;
        }
        switch (type) {
        case ondemand::json_type::array:
            return readArray(node, content);
        case ondemand::json_type::object:
            return readObject(node, content);
        case ondemand::json_type::string:
            return readString(node, content);
        case ondemand::json_type::number:
            return readNumber(node, content);
        case ondemand::json_type::boolean:
            return readBoolean(node, content);
        case ondemand::json_type::null:
            return readNull(node, content);
        }
        return simdjson::TAPE_ERROR;
    }

private:
    class Level
    {
    public:
        explicit Level(int &depth)
            : m_depth(depth)
        {
            ++m_depth;
        }
        ~Level() { --m_depth; }
        Q_DISABLE_COPY_MOVE(Level)

        bool tooDeep() const { return m_depth > maxDepth; }

    private:
        int &m_depth;
    };

    error_code readValue(ondemand::value &value, JsonValue &result)
    {
        JsonValue::Content content;
        const auto error = read(value, content);
        result = JsonValue(std::move(content));
        return error;
    }

    template<typename Node>
    error_code readArray(Node &node, JsonValue::Content &content)
    {
        const Level level(m_depth);
        ondemand::array array;
        if (const auto error = node.get_array().get(array); error || level.tooDeep()) {
            return error ? error : simdjson::DEPTH_ERROR;
        }
        JsonArray elements;
        for (auto element : array) {
            ondemand::value value;
            auto error = std::move(element).get(value);
            if (!error) {
                error = readValue(value, elements.emplace_back());
            }
            if (error) {
                return error;
            }
        }
        content = std::move(elements);
        return simdjson::SUCCESS;
    }

    template<typename Node>
    error_code readObject(Node &node, JsonValue::Content &content)
    {
        const Level level(m_depth);
        ondemand::object object;
        if (const auto error = node.get_object().get(object); error || level.tooDeep()) {
            return error ? error : simdjson::DEPTH_ERROR;
        }
        std::vector<JsonMember> members;
        for (auto member : object) {
            ondemand::field field;
            auto error = std::move(member).get(field);
            if (!error) {
                error = readMember(field, members.emplace_back());
            }
            if (error) {
                return error;
            }
        }
        content = JsonObject(std::move(members));
        return simdjson::SUCCESS;
    }

    error_code readMember(ondemand::field &field, JsonMember &member)
    {
        std::string_view name;
        if (const auto error = field.unescaped_key().get(name)) {
            return error;
        }
        member.name = name;
        return readValue(field.value(), member.value);
    }

    template<typename Node>
    static error_code readString(Node &node, JsonValue::Content &content)
    {
        std::string_view text;
        const auto error = node.get_string().get(text);
        content = std::string(text);
        return error;
    }

    template<typename Node>
    static error_code readNumber(Node &node, JsonValue::Content &content)
    {
        std::int64_t integer = 0;
        if (!node.get_int64().get(integer)) {
            content = integer;
            return simdjson::SUCCESS;
        }
        double number = 0;
        const auto error = node.get_double().get(number);
        content = number;
        return error;
    }

    template<typename Node>
    static error_code readBoolean(Node &node, JsonValue::Content &content)
    {
        bool value = false;
        const auto error = node.get_bool().get(value);
        content = value;
        return error;
    }

    template<typename Node>
    static error_code readNull(Node &node, JsonValue::Content &content)
    {
        bool null = false;
        const auto error = node.is_null().get(null);
        content = nullptr;
        return !error && !null ? simdjson::N_ATOM_ERROR : error;
    }

    int m_depth = 0;
    std::size_t m_values = 0;
};

// The code unit of the escape that begins at `at`, if one does: 0xD83D for "\uD83D".
std::optional<unsigned> escapedUnit(std::string_view text, std::size_t at)
{
    constexpr std::size_t digits = 4;
    if (text.size() < at + 2 + digits || text[at] != '\\' || text[at + 1] != 'u') {
        return std::nullopt;
    }
    unsigned unit = 0;
    const char *first = text.data() + at + 2;
    const auto read = std::from_chars(first, first + digits, unit, 16);
    return read.ptr == first + digits ? std::optional(unit) : std::nullopt;
}

// Half of a surrogate pair is no character, and simdjson refuses a whole document for it. Its
// escape becomes that of U+FFFD, which is as long.
void replaceLoneSurrogates(std::span<char> json)
{
    const std::string_view text(json.data(), json.size());
    std::size_t at = text.find('\\');
    while (at != std::string_view::npos) {
        const auto unit = escapedUnit(text, at);
        std::size_t length = unit ? 6 : 2;
        if (unit && QChar::isSurrogate(*unit)) {
            const auto next = escapedUnit(text, at + length);
            if (QChar::isHighSurrogate(*unit) && next && QChar::isLowSurrogate(*next)) {
                length *= 2;
            } else {
                std::ranges::copy(std::string_view("FFFD"), json.data() + at + 2);
            }
        }
        at = text.find('\\', at + length);
    }
}

} // namespace

struct JsonReader::Memory {
    error_code parse(JsonValue::Content &content)
    {
        ondemand::document document;
        if (const auto error = parser.iterate(text.data(), length, text.size()).get(document)) {
            return error;
        }
        if (const auto error = TreeReader().read(document, content)) {
            return error;
        }
        const bool atEnd = document.current_location().error() == simdjson::OUT_OF_BOUNDS;
        return atEnd ? simdjson::SUCCESS : simdjson::TRAILING_CONTENT;
    }

    ondemand::parser parser;
    std::string text; // with the room behind it that the parser wants
    std::size_t length = 0;
};

JsonReader::JsonReader()
    : m_memory(std::make_unique<Memory>())
{
}

JsonReader::~JsonReader() = default;

std::expected<JsonValue, QString> JsonReader::read(std::string_view text)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    m_memory->text.assign(text);
    m_memory->text.append(simdjson::SIMDJSON_PADDING, ' ');
    m_memory->length = text.size();

    JsonValue::Content content;
    error_code error = m_memory->parse(content);
    if (error == simdjson::STRING_ERROR) {
        replaceLoneSurrogates({m_memory->text.data(), m_memory->length});
        error = m_memory->parse(content);
    }
    if (error) {
        return std::unexpected(QString::fromUtf8(simdjson::error_message(error)));
    }
    return JsonValue(std::move(content));
}

std::expected<JsonValue, QString> parseJson(std::string_view text)
{
    return JsonReader().read(text);
}

} // namespace ostrelle
