#include "displayserver/GlobalShortcut.h"

#include "displayserver/PortalShortcut.h"
#include "displayserver/X11Shortcut.h"
#include "platform/Log.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// In a Wayland session the X server reports keys only while one of its own windows has the focus.
// That is better than nothing where the portal is of no use.
std::unique_ptr<GlobalShortcut> listenOnWayland(WorkPool &background)
{
    auto portal = std::make_unique<PortalShortcut>(background);
    QObject::connect(portal.get(), &PortalShortcut::notHeard, [shortcut = portal.get()] {
        if (auto onX11 = X11Shortcut::listen()) {
            QObject::connect(onX11.get(), &GlobalShortcut::pressed, shortcut,
                             &GlobalShortcut::pressed);
            QObject::connect(shortcut, &PortalShortcut::bound, onX11.get(), &QObject::deleteLater);
            onX11.release()->setParent(shortcut);
        }
    });
    return portal;
}

} // namespace

std::unique_ptr<GlobalShortcut> GlobalShortcut::listen(WorkPool &background)
{
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return listenOnWayland(background);
    }
    if (auto shortcut = X11Shortcut::listen()) {
        return shortcut;
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
