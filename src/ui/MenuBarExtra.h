#pragma once

#include "ui/DesktopModule.h"
#include "ui/MenuBarLabel.h"
#include "ui/PanelWindow.h"
#include "ui/TrayHostWatcher.h"

#include <QElapsedTimer>

#include <chrono>

namespace ostrelle
{

// The icon, the panel, and who opens what: the icon appears when a tray host does, and the panel on
// a click. Where no host comes within a moment the panel opens as a window.
class MenuBarExtra : public QObject, public Scene
{
    Q_OBJECT

public:
    MenuBarExtra(const Models &models, std::function<void()> appeared);
    ~MenuBarExtra() override;

    void openPanel() override;

private:
    void showLabel();
    void togglePanel();
    void openIfThereIsNoTray();
    PanelWindow *panel();
    std::optional<QRect> panelPlace() const;

    const Models m_models;
    const PanelEvents m_events;
    TrayHostWatcher m_hosts;
    MenuBarLabel m_label;
    std::unique_ptr<PanelWindow> m_panel; // null before it is first opened
    QElapsedTimer m_sinceLostFocus;       // of the panel
};

} // namespace ostrelle
