#pragma once

#include "tray/MenuBarLabel.h"
#include "tray/PanelWindow.h"
#include "tray/TrayHostWatcher.h"

#include <QElapsedTimer>

namespace ostrelle
{

// The program's face: the icon, the panel, and who opens what. The icon appears when a tray host
// does, and the panel on a click. Where no host comes within a moment the panel opens as a window.
// Main thread only.
class MenuBarExtra : public QObject
{
    Q_OBJECT

public:
    // The models and the hosts must live longer.
    MenuBarExtra(const Models &models, const TrayHostWatcher &hosts);
    ~MenuBarExtra() override;

    void openPanel();

Q_SIGNALS:
    void iconShown();
    void panelAppeared(); // whenever it has been opened

private:
    void showLabel();
    void togglePanel();
    void openIfThereIsNoTray();
    PanelWindow *panel();
    std::optional<QRect> panelPlace() const;

    const Models m_models;
    const PanelEvents m_events;
    const TrayHostWatcher &m_hosts;
    MenuBarLabel m_label;
    std::unique_ptr<PanelWindow> m_panel; // null before it is first opened
    QElapsedTimer m_sinceLostFocus;       // of the panel
};

} // namespace ostrelle
