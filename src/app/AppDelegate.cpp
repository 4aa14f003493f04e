#include "app/AppDelegate.h"

#include "platform/ChildProcess.h"
#include "statusserver/StatusServer.h"
#include "voice/ServiceManager.h"

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

void AppDelegate::applicationDidFinishLaunching()
{
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &AppDelegate::cleanup);
    connect(&m_signals, &TerminationSignals::terminationRequested, this, [this] {
        cleanup();
        QCoreApplication::exit(0);
    });
}

void AppDelegate::cleanup()
{
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
