#pragma once

#include <QColor>
#include <QObject>
#include <QRect>

#include <memory>

class QAction;
class QMenu;
class QSystemTrayIcon;

namespace ostrelle
{

class GatewayViewModel;
class VoiceViewModel;

// The pearl in the tray, with the state in words as its tooltip, and a menu that serves alone where
// the desktop opens it on a click. The models must live longer. Main thread only.
class MenuBarLabel : public QObject
{
    Q_OBJECT

public:
    MenuBarLabel(GatewayViewModel *gatewayVM, VoiceViewModel *voiceVM, QObject *parent = nullptr);
    ~MenuBarLabel() override;

    // Puts the icon into the tray. Only when a tray host is there: Qt decides with the first
    // icon how icons get to the tray, and one without a host never appears. A host that comes back
    // later gets the icon again.
    void show();
    // Until the next show().
    void hide();
    bool isShown() const { return m_icon != nullptr; }

    // Of the icon on the desktop; empty where the desktop does not tell.
    QRect geometry() const;

Q_SIGNALS:
    void clicked();       // a host may report the second of two quick clicks so too
    void doubleClicked(); // after the first click was reported
    void menuOpens();     // or a host only asks for the menu, as some do when they start
    void openChosen();

private:
    void makeMenu();
    void update();

    GatewayViewModel *const m_gatewayVM;
    VoiceViewModel *const m_voiceVM;
    std::unique_ptr<QMenu> m_menu;
    QAction *m_stateLine = nullptr;
    QAction *m_mute = nullptr;
    std::unique_ptr<QSystemTrayIcon> m_icon;
    QColor m_shownColor;
};

} // namespace ostrelle
