#include "gateway/ChatReply.h"

#include "gateway/Utf8.h"

#include <string_view>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

using simdjson::dom::element;

// The first choice of a list of nothing but objects.
std::optional<element> firstChoice(element document)
{
    simdjson::dom::array choices;
    if (document["choices"].get(choices) != simdjson::SUCCESS || choices.size() == 0) {
        return std::nullopt;
    }
    for (const element choice : choices) {
        if (!choice.is_object()) {
            return std::nullopt;
        }
    }
    return choices.at(0).value_unsafe();
}

std::optional<QString> completion(const QByteArray &body)
{
    simdjson::dom::parser parser;
    element document;
    if (parser.parse(body.constData(), static_cast<std::size_t>(body.size())).get(document) !=
        simdjson::SUCCESS) {
        return std::nullopt;
    }
    const auto choice = firstChoice(document);
    std::string_view content;
    if (!choice || (*choice)["message"]["content"].get(content) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    return QString::fromUtf8(content.data(), static_cast<qsizetype>(content.size()));
}

} // namespace

QString chatReply(const QByteArray &body)
{
    if (const auto reply = completion(body)) {
        return *reply;
    }
    return textFromUtf8(body).value_or(u"No response"_s);
}

} // namespace ostrelle
