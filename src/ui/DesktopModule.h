#pragma once

#include "ui/Models.h"

#include <QObject>

#include <functional>
#include <memory>

class QCoreApplication;

namespace ostrelle
{

// The program's face: the tray icon and, from its first opening on, the panel. Main thread only.
class Scene
{
public:
    virtual ~Scene() = default;
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;

    virtual void openPanel() = 0;

protected:
    Scene() = default;
};

// Provided by the module that holds Qt Widgets and is loaded only where there is a display.
class DesktopModule
{
public:
    virtual ~DesktopModule() = default;
    DesktopModule(const DesktopModule &) = delete;
    DesktopModule &operator=(const DesktopModule &) = delete;

    static constexpr auto name = "ostrelle_tray";

    // The application on the display. Where the display cannot be reached after all, an application
    // without one.
    virtual std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv) = 0;

    // Calls `pressed` on every Super+Shift+M, whatever window has the focus, for as long as the
    // returned object lives.
    virtual std::unique_ptr<QObject> monitorShortcut(std::function<void()> pressed) = 0;

    // Null without a display. `appeared` is called whenever the panel has been opened.
    virtual std::unique_ptr<Scene> makeScene(const Models &models,
                                             std::function<void()> appeared) = 0;

protected:
    DesktopModule() = default;
};

} // namespace ostrelle

Q_DECLARE_INTERFACE(ostrelle::DesktopModule, "ai.duskrell.ostrelle.DesktopModule")
