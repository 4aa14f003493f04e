#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace ostrelle
{

// What the voice agent says of itself. The defaults hold for what an answer leaves out.
struct VoiceStatus {
    QString state = QStringLiteral("unknown");
    bool muted = false;
    QString tier = QStringLiteral("local"); // where it processes speech
    bool wakeWordEnabled = false;

    // What is shown while no agent answers.
    static VoiceStatus offline() { return {.state = QStringLiteral("offline")}; }

    // Reads the body of a status answer; absent unless it is a JSON object. A member of another
    // type counts as left out.
    static std::optional<VoiceStatus> fromJson(const QByteArray &body);

    friend bool operator==(const VoiceStatus &, const VoiceStatus &) = default;
};

} // namespace ostrelle
