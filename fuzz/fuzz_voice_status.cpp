// Reads any answer of a voice agent, and the same as a member of a larger one.

#include "Input.h"
#include "voice/VoiceStatus.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray body = bytesOf(data, size);
    const auto status = VoiceStatus::fromJson(body);
    if (!status) {
        require(!QJsonDocument::fromJson(body).isObject());
        return 0;
    }
    // What it says comes back from an answer that says just that.
    const QJsonObject said{{QStringLiteral("state"), status->state},
                           {QStringLiteral("muted"), status->muted},
                           {QStringLiteral("tier"), status->tier},
                           {QStringLiteral("wake_word_enabled"), status->wakeWordEnabled}};
    require(VoiceStatus::fromJson(QJsonDocument(said).toJson()) == status);
    return 0;
}
