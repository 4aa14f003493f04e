#pragma once

#include "core/BackgroundWork.h"
#include "core/WhenDone.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <limits>

namespace ostrelle
{

// Calls `use(connection)` on the owner's thread once the session bus has answered, and not before
// the owner is back in its event loop. Where there is no bus the connection is not connected; with
// one that hangs nothing is called.
template<typename Use>
void withSessionBus(QObject *owner, Use use)
{
    // The first use of the process's connection waits for the bus.
    const auto connect = [] { return QDBusConnection::sessionBus(); };
    whenDone(utilityPool().run(connect), owner, std::move(use));
}

// Calls `go` on the owner's thread as soon as the session bus answers, or there is none. Until then
// what asks the bus and waits, as Qt does here and there, would hang with it.
template<typename Go>
void onceBusAnswers(QObject *owner, Go go)
{
    withSessionBus(owner, [owner, go = std::move(go)](const QDBusConnection &bus) {
        if (!bus.isConnected()) {
            go();
            return;
        }
        const auto question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
        constexpr int noDeadline = std::numeric_limits<int>::max();
        const auto *answer =
            new QDBusPendingCallWatcher(bus.asyncCall(question, noDeadline), owner);
        QObject::connect(answer, &QDBusPendingCallWatcher::finished, owner,
                         [go](QDBusPendingCallWatcher *finished) {
                             finished->deleteLater();
                             go();
                         });
    });
}

} // namespace ostrelle
