#include "app/OstrelleApp.h"
#include "app/RunProgram.h"
#include "core/BackgroundWork.h"
#include "displayserver/GlobalShortcut.h"
#include "setup/SetupManager.h"
#include "tray/MenuBarExtra.h"
#include "tray/TrayApplication.h"

#include <QTimer>

#include <optional>

namespace ostrelle
{

namespace
{

// The icon comes first: background work waits for it, so that the tools which that starts do not
// take the processor from it.
class TrayFace : public Face
{
public:
    void show(OstrelleApp &app) override
    {
        m_extra.emplace(app.models(), m_hosts);
        QObject::connect(&*m_extra, &MenuBarExtra::panelAppeared, &app,
                         &OstrelleApp::handOverServices);
        QObject::connect(&*m_extra, &MenuBarExtra::iconShown, &m_hosts,
                         [this] { endHold(hostTakesIconIn); });
        endHold(iconPatience);
        const auto offerSetup = [this, models = app.models()] { openAtVeryFirstStart(models); };
        QObject::connect(&*m_extra, &MenuBarExtra::iconShown, &m_hosts, offerSetup);
        QObject::connect(app.models().setupManager, &SetupManager::showSetupChanged, &m_hosts,
                         offerSetup);
    }

    void openPanel() override { m_extra->openPanel(); }

    std::unique_ptr<QObject> monitorShortcut(std::function<void()> pressed) override
    {
        auto shortcut = GlobalShortcut::listen(utilityPool());
        if (shortcut) {
            QObject::connect(shortcut.get(), &GlobalShortcut::pressed, std::move(pressed));
        }
        return shortcut;
    }

private:
    static constexpr std::chrono::milliseconds hostTakesIconIn{30};
    static constexpr std::chrono::milliseconds iconPatience{200}; // there may be no host

    // The setup waits where nobody would look for it yet. Without a tray the panel opens anyway.
    void openAtVeryFirstStart(const Models &models)
    {
        const SetupManager &setup = *models.setupManager;
        Preferences &preferences = *models.settings.preferences;
        if (m_hosts.hostPresent() && setup.showSetup() && !setup.hasConfig() &&
            !preferences.value(preference::setupWasShown)) {
            preferences.set(preference::setupWasShown, true);
            openPanel();
        }
    }

    void endHold(std::chrono::milliseconds after)
    {
        QTimer::singleShot(after, &m_hosts, [this] { m_hold.reset(); });
    }

    TrayHostWatcher m_hosts; // has asked the bus before background work is held
    std::optional<BackgroundHold> m_hold = std::make_optional<BackgroundHold>();
    std::optional<MenuBarExtra> m_extra; // what is seen
};

std::unique_ptr<Face> makeTrayFace()
{
    return std::make_unique<TrayFace>();
}

} // namespace

} // namespace ostrelle

// Called by the program's main, by this name.
extern "C" int runOnDesktop(int argc, char **argv, const char *link)
{
    ostrelle::prepareProgram();
    const ostrelle::TrayApplication application(argc, argv);
    return ostrelle::runProgram(link, ostrelle::isOnDisplay() ? &ostrelle::makeTrayFace : nullptr);
}
