#pragma once

#include "platform/TerminationSignals.h"

#include <QObject>

namespace ostrelle
{

class StatusServer;

// What must happen outside the services themselves: the end of the program. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    explicit AppDelegate(QObject *parent = nullptr);

    // The services that the end of the program has to stop; null before start-up has made them.
    void setServices(StatusServer *statusServer);

    // From now on TERM, INT and HUP, and the application's own quitting, end the services.
    void applicationDidFinishLaunching();

    // Stops whatever runs. May be called any number of times.
    void cleanup();

private:
    StatusServer *m_statusServer = nullptr;
    TerminationSignals m_signals;
};

} // namespace ostrelle
