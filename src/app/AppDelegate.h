#pragma once

#include "platform/TerminationSignals.h"

#include <QObject>

namespace ostrelle
{

class ServiceManager;
class StatusServer;
class VoiceViewModel;

// What must happen outside the services themselves: the end of the program. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    explicit AppDelegate(QObject *parent = nullptr);

    // What the delegate acts on; null before start-up has made it.
    struct Services {
        ServiceManager *serviceManager = nullptr;
        VoiceViewModel *voiceVM = nullptr;
        StatusServer *statusServer = nullptr;
    };
    void setServices(const Services &services);

    // From now on TERM, INT and HUP, and the application's own quitting, end the services.
    void applicationDidFinishLaunching();

    // Stops whatever runs. May be called any number of times.
    void cleanup();

private:
    void stopVoice() const;

    Services m_services;
    TerminationSignals m_signals;
};

} // namespace ostrelle
