#include "platform/Display.h"

#include <QByteArray>

namespace ostrelle
{

bool hasDisplay()
{
    const QByteArray chosen = qgetenv("QT_QPA_PLATFORM");
    if (!chosen.isEmpty()) {
        return !chosen.startsWith("offscreen") && !chosen.startsWith("minimal");
    }
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace ostrelle
