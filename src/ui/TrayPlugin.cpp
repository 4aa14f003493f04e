#include "platform/GlobalShortcut.h"
#include "ui/DesktopModule.h"
#include "ui/MenuBarExtra.h"

#include <QApplication>

#include <array>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// X11 first: Wayland lets no program place its panel beside its icon. Without either display the
// program does everything else.
constexpr std::array platforms{"-platform", "xcb;wayland;offscreen"};

} // namespace

class TrayPlugin : public QObject, public DesktopModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "ai.duskrell.ostrelle.DesktopModule")
    Q_INTERFACES(ostrelle::DesktopModule)

public:
    std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv) override
    {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
            m_arguments.assign(argv, argv + argc);
            for (const char *argument : platforms) {
                m_arguments.push_back(const_cast<char *>(argument));
            }
            m_count = static_cast<int>(m_arguments.size());
            m_arguments.push_back(nullptr);
        }
        auto application = m_arguments.empty()
                               ? std::make_unique<QApplication>(argc, argv)
                               : std::make_unique<QApplication>(m_count, m_arguments.data());
        QApplication::setQuitOnLastWindowClosed(false);
        QApplication::setDesktopFileName(u"ai.duskrell.ostrelle"_s);
        QApplication::setApplicationDisplayName(u"Ostrelle"_s);
        return application;
    }

    std::unique_ptr<QObject> monitorShortcut(std::function<void()> pressed) override
    {
        auto shortcut = GlobalShortcut::listen();
        if (shortcut) {
            QObject::connect(shortcut.get(), &GlobalShortcut::pressed, std::move(pressed));
        }
        return shortcut;
    }

    std::unique_ptr<Scene> makeScene(const Models &models, std::function<void()> appeared) override
    {
        if (QGuiApplication::platformName() == "offscreen"_L1) {
            return nullptr;
        }
        return std::make_unique<MenuBarExtra>(models, std::move(appeared));
    }

private:
    // The application's own, for as long as it lives.
    int m_count = 0;
    std::vector<char *> m_arguments;
};

} // namespace ostrelle

#include "TrayPlugin.moc"
