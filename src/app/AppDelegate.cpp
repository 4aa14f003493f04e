#include "app/AppDelegate.h"

#include "app/RunProgram.h"
#include "platform/ChildProcess.h"
#include "statusserver/StatusServer.h"
#include "voice/ServiceManager.h"
#include "voice/VoiceViewModel.h"

#include <QCoreApplication>

#include <csignal>

namespace ostrelle
{

AppDelegate::AppDelegate(QObject *parent)
    : QObject(parent)
{
}

void AppDelegate::setServices(const Services &services)
{
    m_services = services;
}

void AppDelegate::applicationDidFinishLaunching(Face *face)
{
    if (face != nullptr) {
        m_monitor = face->monitorShortcut([this] { toggleMute(); });
    }
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &AppDelegate::cleanup);
    connect(&m_signals, &TerminationSignals::terminationRequested, this, [this] {
        cleanup(); // at once, also where an event loop within this one has to end first
        QCoreApplication::exit(0);
    });
}

void AppDelegate::toggleMute() const
{
    if (m_services.voiceVM != nullptr) {
        m_services.voiceVM->toggleMute();
    }
}

void AppDelegate::cleanup()
{
    m_monitor.reset();
    stopVoice();
    if (m_services.statusServer != nullptr) {
        m_services.statusServer->stop();
    }
    endAllChildren();
}

void AppDelegate::stopVoice() const
{
    if (m_services.serviceManager == nullptr) {
        return;
    }
    const qint64 pid = m_services.serviceManager->voiceProcessId();
    m_services.serviceManager->stopVoice();
    if (pid >= 1) {
        ::kill(static_cast<pid_t>(pid), SIGKILL);
    }
    ServiceManager::killFromPidFile();
}

} // namespace ostrelle

#include "moc_AppDelegate.cpp"
