#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ostrelle
{

struct JsonMember;
class JsonValue;

// A JSON object with its members in document order. Of members with the same name the last one
// counts, at the place of the first.
class JsonObject
{
public:
    JsonObject() = default;
    explicit JsonObject(std::vector<JsonMember> members);

    // Null when there is no such member.
    const JsonValue *find(std::string_view name) const;

    // The member's value, or JSON null when there is none.
    const JsonValue &operator[](std::string_view name) const;

    // The first of these members that is a string.
    std::optional<QString> firstString(std::span<const std::string_view> names) const;

    const std::vector<JsonMember> &members() const { return m_members; }
    bool isEmpty() const;

    friend bool operator==(const JsonObject &, const JsonObject &) = default;

private:
    std::vector<JsonMember> m_members;
};

using JsonArray = std::vector<JsonValue>;

// One JSON value. Each reader is empty (or null) when the value is of another type.
class JsonValue
{
public:
    using Content = std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, JsonArray,
                                 JsonObject>;

    JsonValue();
    explicit JsonValue(Content content);

    std::optional<QString> string() const;
    bool isString(std::string_view utf8) const; // this very text
    std::optional<bool> boolean() const;
    std::optional<double> number() const;
    // A number without a fraction in the 64-bit range; 42.0 is one.
    std::optional<qint64> integer() const;
    const JsonArray *array() const { return std::get_if<JsonArray>(&m_content); }
    const JsonObject *object() const { return std::get_if<JsonObject>(&m_content); }
    // The member of an object, or JSON null when there is none or this is no object.
    const JsonValue &operator[](std::string_view name) const;
    bool isNull() const { return std::holds_alternative<std::nullptr_t>(m_content); }

    friend bool operator==(const JsonValue &, const JsonValue &) = default;

private:
    Content m_content;
};

struct JsonMember {
    std::string name; // UTF-8
    JsonValue value;

    friend bool operator==(const JsonMember &, const JsonMember &) = default;
};

// The array that the document, an object, has under this name. Null when it has none, or when
// anything in it is not an object.
const JsonArray *objectsIn(const JsonValue &document, std::string_view member);

} // namespace ostrelle
