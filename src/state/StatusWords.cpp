#include "state/StatusWords.h"

#include "core/NamedColor.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString greenOr(NamedColor otherwise, bool isGreen)
{
    return colorName(isGreen ? NamedColor::Green : otherwise);
}

QString runningOrNot(bool isRunning)
{
    return isRunning ? u"running"_s : u"not running"_s;
}

} // namespace

QString StatusWords::colorName(const QString &word)
{
    return ostrelle::colorName(statusColor(word));
}

Light StatusWords::gateway(bool isOnline)
{
    return {.word = isOnline ? u"online"_s : u"offline"_s,
            .color = greenOr(NamedColor::Red, isOnline)};
}

Light StatusWords::voice(bool isEnabled, bool isRunning)
{
    if (!isEnabled) {
        return {.word = u"switched off"_s, .color = ostrelle::colorName(NamedColor::Grey)};
    }
    return {.word = runningOrNot(isRunning), .color = greenOr(NamedColor::Red, isRunning)};
}

Light StatusWords::statusServer(bool isRunning, bool isPortTaken)
{
    if (!isRunning && isPortTaken) {
        return {.word = u"waiting for its port"_s,
                .color = ostrelle::colorName(NamedColor::Yellow)};
    }
    return {.word = runningOrNot(isRunning), .color = greenOr(NamedColor::Red, isRunning)};
}

Light StatusWords::lock(bool isSecure)
{
    return {.word = isSecure ? u"encrypted"_s : u"not encrypted"_s,
            .color = greenOr(NamedColor::Teal, isSecure)};
}

QString StatusWords::remoteProblem(bool isTailscaleInstalled, const QString &magicDNSURL)
{
    if (!isTailscaleInstalled) {
        return u"Tailscale not running — remote access unavailable"_s;
    }
    return magicDNSURL.isEmpty() ? u"Tailscale connected but HTTPS not configured"_s : QString();
}

Light StatusWords::job(bool isEnabled, const QString &status)
{
    return isEnabled ? Light{.word = status.toUpper(), .color = colorName(status)}
                     : Light{.word = u"DISABLED"_s, .color = ostrelle::colorName(NamedColor::Grey)};
}

} // namespace ostrelle

#include "moc_StatusWords.cpp"
