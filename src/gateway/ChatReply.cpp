#include "gateway/ChatReply.h"

#include "core/Json.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The content of the first of the choices.
std::optional<QString> completion(const QByteArray &body)
{
    const auto document = parseJson({body.constData(), static_cast<std::size_t>(body.size())});
    const JsonArray *choices = document ? objectsIn(*document, "choices") : nullptr;
    return choices != nullptr && !choices->empty() ? choices->front()["message"]["content"].string()
                                                   : std::nullopt;
}

} // namespace

QString chatReply(const QByteArray &body)
{
    if (const auto reply = completion(body)) {
        return *reply;
    }
    return body.isValidUtf8() ? QString::fromUtf8(body) : u"No response"_s;
}

} // namespace ostrelle
