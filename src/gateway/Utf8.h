#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <simdjson.h>

namespace ostrelle
{

// The text, or nothing when the bytes are not UTF-8.
inline std::optional<QString> textFromUtf8(const QByteArray &bytes)
{
    if (!simdjson::validate_utf8(bytes.constData(), static_cast<std::size_t>(bytes.size()))) {
        return std::nullopt;
    }
    return QString::fromUtf8(bytes);
}

} // namespace ostrelle
