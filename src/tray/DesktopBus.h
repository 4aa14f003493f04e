#pragma once

#include "core/BackgroundWork.h"
#include "core/WhenDone.h"

#include <QDBusConnection>
#include <QtConcurrentRun>

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
    whenDone(QtConcurrent::run(&utilityPool(), connect), owner, std::move(use));
}

} // namespace ostrelle
