#pragma once

#include "displayserver/GlobalShortcut.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QFutureWatcher>

#include <chrono>
#include <functional>

namespace ostrelle
{

// Hears the shortcut through the desktop's GlobalShortcuts portal, which may ask the user first.
// Binds it again when the portal's service comes late or is restarted; does not insist once it was
// refused. The bus connection is its own: the portal knows a program by its connection, and ends
// the session with it.
class PortalShortcut : public GlobalShortcut
{
    Q_OBJECT

public:
    // Does not wait for the portal. When no session was opened after `patience`, that is logged; an
    // answer that comes later counts all the same.
    explicit PortalShortcut(WorkPool &background,
                            std::chrono::milliseconds patience = std::chrono::seconds(25));

Q_SIGNALS:
    void notHeard(); // once, with the log line
    void bound();

private Q_SLOTS:
    void handleEnd(const QDBusMessage &end);
    void adoptSession(uint response, const QVariantMap &results);
    void handleBinding(uint response);
    void handleActivation(const QDBusObjectPath &session);

private:
    struct Disconnect {
        void operator()(const QDBusConnection *bus) const;
    };
    using Bus = std::unique_ptr<QDBusConnection, Disconnect>;
    static Bus connectToBus();

    void listenOn(Bus bus);
    void followPortal(const QString &oldOwner, const QString &newOwner);
    void begin();
    void createSession();
    void bindShortcut();
    void call(const QDBusMessage &message, std::function<void(bool failed)> then);
    void giveUp(const QString &reason);
    void logOnce(const QString &reason);

    const std::chrono::milliseconds m_patience;
    bool m_logged = false;
    bool m_hasEnded = false; // a session of this portal that was of no use
    QFutureWatcher<Bus> m_connecting;
    Bus m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_portal;
    // Owns the calls to the portal that runs now. Null while there is no portal to ask.
    std::unique_ptr<QObject> m_attempt;
    QDBusObjectPath m_session;
};

} // namespace ostrelle
