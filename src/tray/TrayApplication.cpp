#include "tray/TrayApplication.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// X11 first: Wayland lets no program place its panel beside its icon. Without either display the
// program does everything else.
const char *platforms()
{
    return qEnvironmentVariableIsEmpty("DISPLAY") ? "wayland;offscreen" : "xcb;wayland;offscreen";
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
