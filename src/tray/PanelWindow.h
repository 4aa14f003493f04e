#pragma once

#include "state/Models.h"

#include <QObject>
#include <QRect>
#include <QSize>

#include <functional>
#include <memory>
#include <optional>

namespace ostrelle
{

// Of the panel where the screen has room for it; the designed one, in points.
inline constexpr QSize panelSize(380, 700);

// The panel as the tray icon sees it. Main thread only.
class PanelWindow
{
public:
    virtual ~PanelWindow() = default;
    PanelWindow(const PanelWindow &) = delete;
    PanelWindow &operator=(const PanelWindow &) = delete;

    // Shows the panel at that place of the desktop, without a frame and until it loses the focus;
    // without a place as an ordinary window, until the user closes it. Brings an open one to the
    // front.
    virtual void open(const std::optional<QRect> &place) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;

protected:
    PanelWindow() = default;
};

// What the panel tells.
struct PanelEvents {
    std::function<void()> appeared = [] {};
    std::function<void()> lostFocus = [] {}; // and has closed itself for that
};

// Provided by the module that holds Qt Quick and is loaded a moment after the start.
class PanelModule
{
public:
    virtual ~PanelModule() = default;
    PanelModule(const PanelModule &) = delete;
    PanelModule &operator=(const PanelModule &) = delete;

    static constexpr auto name = "ostrelle_panel";

    virtual std::unique_ptr<PanelWindow> makePanel(const Models &models, PanelEvents events) = 0;

protected:
    PanelModule() = default;
};

} // namespace ostrelle

Q_DECLARE_INTERFACE(ostrelle::PanelModule, "ai.duskrell.ostrelle.PanelModule")
