#include "voice/VoiceStatus.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle
{

using namespace Qt::StringLiterals;

std::optional<VoiceStatus> VoiceStatus::fromJson(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject()) {
        return std::nullopt;
    }
    const QJsonObject answer = document.object();
    VoiceStatus status;
    status.state = answer["state"_L1].toString(status.state);
    status.muted = answer["muted"_L1].toBool(status.muted);
    status.tier = answer["tier"_L1].toString(status.tier);
    status.wakeWordEnabled = answer["wake_word_enabled"_L1].toBool(status.wakeWordEnabled);
    return status;
}

} // namespace ostrelle
