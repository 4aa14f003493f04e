#include "core/JsonValue.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrelle
{

namespace
{

// Unlike QString::fromUtf8() alone, this keeps a byte order mark: here it is part of the text.
QString fromUtf8(std::string_view text)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const auto decoded = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return text.starts_with(byteOrderMark) ? QChar(QChar::ByteOrderMark) + decoded : decoded;
}

// True for most objects; larger ones take the longer way.
bool isSmallWithoutTwins(std::span<const JsonMember> members)
{
    constexpr std::size_t small = 16;
    for (std::size_t i = 1; i < members.size() && i < small; ++i) {
        const auto before = members.first(i);
        if (std::ranges::find(before, members[i].name, &JsonMember::name) != before.end()) {
            return false;
        }
    }
    return members.size() <= small;
}

const JsonValue &nullValue()
{
    static const JsonValue null;
    return null;
}

} // namespace

JsonObject::JsonObject(std::vector<JsonMember> members)
    : m_members(std::move(members))
{
    if (isSmallWithoutTwins(m_members)) {
        return;
    }
    std::vector<std::size_t> byName(m_members.size());
    std::ranges::generate(byName, [next = std::size_t{0}]() mutable { return next++; });
    std::ranges::sort(byName, {}, [this](std::size_t i) {
        return std::pair(std::string_view(m_members[i].name), i);
    });

    std::vector<bool> replaced(m_members.size());
    std::size_t first = 0;
    for (std::size_t i = 1; i < byName.size(); ++i) {
        if (m_members[byName[i]].name != m_members[byName[first]].name) {
            first = i;
            continue;
        }
        m_members[byName[first]].value = std::move(m_members[byName[i]].value);
        replaced[byName[i]] = true;
    }
    std::erase_if(m_members, [&](const JsonMember &member) {
        return replaced[static_cast<std::size_t>(&member - m_members.data())];
    });
}

const JsonValue *JsonObject::find(std::string_view name) const
{
    const auto member = std::ranges::find(m_members, name, &JsonMember::name);
    return member == m_members.end() ? nullptr : &member->value;
}

const JsonValue &JsonObject::operator[](std::string_view name) const
{
    const JsonValue *value = find(name);
    return value != nullptr ? *value : nullValue();
}

std::optional<QString> JsonObject::firstString(std::span<const std::string_view> names) const
{
    for (const std::string_view name : names) {
        if (auto text = (*this)[name].string()) {
            return text;
        }
    }
    return std::nullopt;
}

bool JsonObject::isEmpty() const
{
    return m_members.empty();
}

JsonValue::JsonValue()
    : m_content(nullptr)
{
}

JsonValue::JsonValue(Content content)
    : m_content(std::move(content))
{
}

const JsonValue &JsonValue::operator[](std::string_view name) const
{
    const JsonObject *members = object();
    return members != nullptr ? (*members)[name] : nullValue();
}

std::optional<QString> JsonValue::string() const
{
    const auto *text = std::get_if<std::string>(&m_content);
    return text != nullptr ? std::optional(fromUtf8(*text)) : std::nullopt;
}

bool JsonValue::isString(std::string_view utf8) const
{
    const auto *text = std::get_if<std::string>(&m_content);
    return text != nullptr && *text == utf8;
}

std::optional<bool> JsonValue::boolean() const
{
    const auto *value = std::get_if<bool>(&m_content);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::optional<double> JsonValue::number() const
{
    if (const auto *integer = std::get_if<std::int64_t>(&m_content)) {
        return static_cast<double>(*integer);
    }
    const auto *number = std::get_if<double>(&m_content);
    return number != nullptr ? std::optional(*number) : std::nullopt;
}

std::optional<qint64> JsonValue::integer() const
{
    if (const auto *integer = std::get_if<std::int64_t>(&m_content)) {
        return *integer;
    }
    const auto *number = std::get_if<double>(&m_content);
    if (number == nullptr || std::trunc(*number) != *number || std::abs(*number) >= 0x1p63) {
        return std::nullopt;
    }
    return static_cast<qint64>(*number);
}

const JsonArray *objectsIn(const JsonValue &document, std::string_view member)
{
    const JsonArray *list = document[member].array();
    const auto isObject = [](const JsonValue &value) { return value.object() != nullptr; };
    return list != nullptr && std::ranges::all_of(*list, isObject) ? list : nullptr;
}

} // namespace ostrelle
