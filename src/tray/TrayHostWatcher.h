#pragma once

#include "displayserver/X11Connection.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QProperty>
#include <QTimer>

namespace ostrelle
{

// Whether somebody shows tray icons: a host of the StatusNotifierItem kind on the session bus, or
// an X11 tray. Touches no QSystemTrayIcon. Main thread only.
class TrayHostWatcher : public QObject
{
    Q_OBJECT

public:
    // Sees nobody before the event loop runs.
    explicit TrayHostWatcher(QObject *parent = nullptr);
    ~TrayHostWatcher() override;

    bool hostPresent() const { return m_hostPresent; }

    // There is an X11 tray, but the desktop is about to bring a better one, for a few seconds yet.
    bool isBusHostExpected() const { return m_x11Host && m_busHostComes; }

Q_SIGNALS:
    void hostPresentChanged();
    void busCameBack(); // after its end: what was said to the old one is to be said again

private Q_SLOTS:
    void askBus();
    void handleBusEnd();

private:
    void watchBus(const QDBusConnection &bus);
    void connectAgain();
    void watchX11();
    void lookForX11Tray();
    void takeAnswer(const QDBusMessage &answer);
    void update();

    std::optional<bool> m_busHost; // nothing until the bus has answered
    bool m_x11Host = false;
    bool m_busHostComes;
    QObject *m_question = nullptr; // the last one to the bus; an older one's answer does not count
    std::unique_ptr<QDBusServiceWatcher> m_watcherService;
    int m_connections = 0; // after the process's own
    std::unique_ptr<X11Connection> m_x11;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(TrayHostWatcher, bool, m_hostPresent, false,
                                         &TrayHostWatcher::hostPresentChanged)
};

} // namespace ostrelle
