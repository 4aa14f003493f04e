#include "displayserver/X11Windows.h"

#include <QGuiApplication>
#include <QWindow>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <array>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The toolkit's own connection, so that requests stay in order; null elsewhere than on X11.
Display *toolkitDisplay()
{
    const auto *const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->display() : nullptr;
}

} // namespace

bool isComposited()
{
    Display *const display = toolkitDisplay();
    // The X server within a Wayland session always has the session's compositor.
    if (display == nullptr || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return QGuiApplication::platformName() == "wayland"_L1 || display != nullptr;
    }
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(DefaultScreen(display));
    return XGetSelectionOwner(display, XInternAtom(display, name.constData(), False)) != None;
}

void keepOutOfTaskbars(QWindow &window)
{
    Display *const display = toolkitDisplay();
    if (display == nullptr) {
        return;
    }
    const std::array states{XInternAtom(display, "_NET_WM_STATE_SKIP_TASKBAR", False),
                            XInternAtom(display, "_NET_WM_STATE_SKIP_PAGER", False)};
    // The toolkit adds its own states to these when it shows the window.
    XChangeProperty(display, window.winId(), XInternAtom(display, "_NET_WM_STATE", False), XA_ATOM,
                    32, PropModeReplace, reinterpret_cast<const unsigned char *>(states.data()),
                    static_cast<int>(states.size()));
}

} // namespace ostrelle
