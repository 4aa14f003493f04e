#pragma once

#include "voice/ServiceManager.h"

#include <QCoreApplication>
#include <QTimer>

namespace ostrelle
{

// Kills the voice agent of the PID file, so that it is not left running, and ends the program 0.3
// seconds later. Main thread only.
inline void quitProgram()
{
    ServiceManager::killFromPidFile();
    QTimer::singleShot(std::chrono::milliseconds(300), QCoreApplication::instance(),
                       &QCoreApplication::quit);
}

} // namespace ostrelle
