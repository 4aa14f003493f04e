#pragma once

#include "support/Processes.h"

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryFile>

#include <memory>
#include <vector>

// A D-Bus session of the test's own, with the real services that a test asks for. All of them end
// with the object. Needs a ScratchHome before it.
class PrivateSession
{
public:
    PrivateSession();
    ~PrivateSession();
    PrivateSession(const PrivateSession &) = delete;
    PrivateSession &operator=(const PrivateSession &) = delete;

    // gnome-keyring with an unlocked login collection.
    QProcess &startKeyring();

    // An X server, and on it a notification daemon that prints what it is asked to show.
    QProcess &startNotificationDaemon();

    // True once somebody owns the name on the bus; waits for it.
    bool waitForService(const QString &name);

    // Stops the bus itself, or lets it go on.
    void freeze(bool isFrozen);

    // Ends the bus itself, as a crash of the session would.
    void endBus() { endProcess(*m_processes.front()); }

private:
    QProcess &start(const QString &program, const QStringList &arguments);

    QTemporaryFile m_configuration;
    std::vector<std::unique_ptr<QProcess>> m_processes; // the bus first
};
