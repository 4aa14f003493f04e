#pragma once

#include "platform/SecretStore.h"

#include <QObject>

namespace ostrelle
{

// What the user's session offers over its bus. Calls block for a few seconds at most: background
// threads only.
class SessionServices
{
public:
    virtual ~SessionServices() = default;
    SessionServices(const SessionServices &) = delete;
    SessionServices &operator=(const SessionServices &) = delete;

    static constexpr auto moduleName = "ostrelle_session";

    // The desktop's Secret Service.
    virtual SecretStore &secrets() = 0;

    // Shows a banner through the desktop's notification service. Without a session bus or a service
    // nothing appears.
    virtual void showNotification(const QString &title, const QString &body) = 0;

protected:
    SessionServices() = default;
};

// The process's own. The first call loads the module that holds GLib, so that the start of the
// program does not wait for that. Null, with one log line, when it cannot be loaded.
SessionServices *sessionServices();

} // namespace ostrelle

Q_DECLARE_INTERFACE(ostrelle::SessionServices, "ai.duskrell.ostrelle.SessionServices")
