#include "statusserver/HistoryRecord.h"

#include <QJsonDocument>
#include <QStringDecoder>
#include <QStringList>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

namespace dom = simdjson::dom;

// The parser lets a lone half of a surrogate pair through; such a text is none.
std::optional<QString> decode(std::string_view text)
{
    if (!simdjson::validate_utf8(text.data(), text.size())) {
        return std::nullopt;
    }
    // Unlike QString::fromUtf8(), this keeps a byte order mark: here it is part of the text.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom |
                                                     QStringDecoder::Flag::Stateless);
    return QString(
        decoder.decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size()))));
}

std::optional<QString> stringOf(const simdjson::simdjson_result<dom::element> &element)
{
    std::string_view text;
    return element.get(text) == simdjson::SUCCESS ? decode(text) : std::nullopt;
}

bool isString(const simdjson::simdjson_result<dom::element> &element, std::string_view expected)
{
    std::string_view text;
    return element.get(text) == simdjson::SUCCESS && text == expected;
}

// The text parts, a line each; empty when anything in the array is not an object.
QString joinedParts(const dom::array &parts)
{
    QStringList texts;
    for (const dom::element part : parts) {
        if (!part.is_object()) {
            return {};
        }
        if (isString(part["type"], "text")) {
            if (const auto text = stringOf(part["text"])) {
                texts.append(*text);
            }
        }
    }
    return texts.join(u'\n');
}

QString textOf(const simdjson::simdjson_result<dom::element> &content)
{
    dom::array parts;
    return content.get(parts) == simdjson::SUCCESS ? joinedParts(parts)
                                                   : stringOf(content).value_or(QString());
}

// What the gateway and its agent say to each other when nobody is there.
bool isChatter(const QString &text)
{
    return text.contains("Read HEARTBEAT.md if it exists"_L1) || text == "HEARTBEAT_OK"_L1 ||
           text == "NO_REPLY"_L1;
}

} // namespace

// A number beyond 64 bits is valid JSON, but more than the fast parser takes: Qt's takes it and
// writes it again as a floating-point number.
simdjson::simdjson_result<dom::element> HistoryRecordReader::parse(std::string_view line)
{
    const auto element = m_parser.parse(line.data(), line.size(), false);
    if (element.error() != simdjson::NUMBER_ERROR) {
        return element;
    }
    const auto size = static_cast<qsizetype>(line.size());
    return m_parser.parse(QJsonDocument::fromJson(QByteArray::fromRawData(line.data(), size))
                              .toJson(QJsonDocument::Compact)
                              .toStdString());
}

std::optional<HistoryRecord> HistoryRecordReader::read(std::string_view line)
{
    dom::element entry;
    dom::element message;
    if (parse(line).get(entry) != simdjson::SUCCESS || !isString(entry["type"], "message") ||
        entry["message"].get(message) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    const auto role = message["role"];
    if (!isString(role, "user") && !isString(role, "assistant")) {
        return std::nullopt;
    }
    const QString text = textOf(message["content"]).trimmed();
    if (text.isEmpty() || isChatter(text)) {
        return std::nullopt;
    }
    return HistoryRecord{.role = *stringOf(role),
                         .content = text,
                         .timestamp = stringOf(entry["timestamp"]).value_or(QString())};
}

} // namespace ostrelle
