#include "platform/GlobalShortcut.h"

#include "platform/Log.h"
#include "platform/PortalShortcut.h"
#include "platform/X11Shortcut.h"

#include <QGuiApplication>

namespace ostrelle
{

using namespace Qt::StringLiterals;

std::unique_ptr<GlobalShortcut> GlobalShortcut::listen(QThreadPool &background)
{
    if (auto shortcut = X11Shortcut::listen()) {
        return shortcut;
    }
    if (QGuiApplication::platformName().startsWith("wayland"_L1)) {
        return std::make_unique<PortalShortcut>(background);
    }
    logNotHeard(u"no X server with XInput 2"_s);
    return nullptr;
}

void GlobalShortcut::logNotHeard(const QString &reason)
{
    logLine(u"[Ostrelle] Super+Shift+M is not heard: "_s + reason);
}

} // namespace ostrelle

#include "moc_GlobalShortcut.cpp"
