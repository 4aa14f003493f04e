#include "tray/TrayApplication.h"

#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Whether the desktop lets programs of its X server place their windows, as X11 always does and
// Wayland never. Of the compositors for Wayland these two do.
bool x11PlacesWindows()
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return true;
    }
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    return desktops.contains(u"GNOME"_s, Qt::CaseInsensitive) ||
           desktops.contains(u"KDE"_s, Qt::CaseInsensitive);
}

// X11 first where the panel can then stand beside its icon. Without either display the program does
// everything else.
const char *platforms()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY")) {
        return "wayland;offscreen";
    }
    return x11PlacesWindows() ? "xcb;wayland;offscreen" : "wayland;xcb;offscreen";
}

} // namespace

PlatformArguments::PlatformArguments(int argc, char **argv)
    : m_values(argv, argv + argc)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        for (const char *argument : {"-platform", platforms()}) {
            m_values.push_back(const_cast<char *>(argument));
        }
    }
    // Where a bus would be. Without an address the library behind Qt starts a bus of its own on the
    // screen, which outlives the program.
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) {
        const QString fallback = u"/run/user/%1"_s.arg(::getuid());
        qputenv("DBUS_SESSION_BUS_ADDRESS",
                "unix:path=" + qEnvironmentVariable("XDG_RUNTIME_DIR", fallback).toUtf8() + "/bus");
    }
    // Else the whole desktop counts as free of bars as soon as there is a second monitor.
    qputenv("QT_RELY_ON_NET_WORKAREA_ATOM", "1");
    m_count = static_cast<int>(m_values.size());
    m_values.push_back(nullptr);
}

TrayApplication::TrayApplication(int argc, char **argv)
    : PlatformArguments(argc, argv)
    , QApplication(m_count, m_values.data())
{
    setQuitOnLastWindowClosed(false);
    setDesktopFileName(u"ai.duskrell.ostrelle"_s);
    setApplicationDisplayName(u"Ostrelle"_s);
}

bool isOnDisplay()
{
    const QString platform = QGuiApplication::platformName();
    return !platform.isEmpty() && platform != "offscreen"_L1;
}

} // namespace ostrelle
