#pragma once

#include "platform/TerminationSignals.h"

#include <QObject>

#include <memory>

namespace ostrelle
{

class Face;
class ServiceManager;
class StatusServer;
class VoiceViewModel;

// What must happen outside the services and the views: the shortcut that mutes the voice agent, and
// the end of the program. Main thread only.
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

    // From now on Super+Shift+M mutes and unmutes, where there is a display; and TERM, INT and HUP,
    // and the application's own quitting, end the services.
    void applicationDidFinishLaunching(Face *face);

    // Stops whatever runs. May be called any number of times.
    void cleanup();

private:
    void toggleMute() const;
    void stopVoice() const;

    Services m_services;
    std::unique_ptr<QObject> m_monitor; // of the shortcut
    TerminationSignals m_signals;
};

} // namespace ostrelle
