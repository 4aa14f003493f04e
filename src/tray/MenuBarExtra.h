#pragma once

#include "displayserver/WaylandSeat.h"
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

    // Beside the icon where the desktop lets programs place their windows; on a Wayland compositor
    // that has no seat yet, once it has one. The first time, once the session bus answers.
    void openPanel();

Q_SIGNALS:
    void iconShown();
    void panelAppeared(); // whenever it has been opened

private:
    void showLabel();
    void renewLabel();
    void handleClick();
    void handleDoubleClick();
    void handleMenu();
    void openIfThereIsNoTray();
    void openFirst();
    std::optional<QRect> panelPlace() const;
    QRect iconPlace() const;

    const Models m_models;
    const PanelEvents m_events;
    const TrayHostWatcher &m_hosts;
    MenuBarLabel m_label;
    std::unique_ptr<WaylandSeat> m_seat;  // null elsewhere than on Wayland
    bool m_waitsForSeat = false;          // to open the panel
    bool m_waitsForBus = false;           // the same
    std::unique_ptr<PanelWindow> m_panel; // null before it is first opened
    std::optional<QPoint> m_lastPointer;  // when the icon was last clicked or its menu opened
    QElapsedTimer m_sinceLostFocus;       // of the panel
    QElapsedTimer m_sinceClickOpened;     // the panel
};

} // namespace ostrelle
