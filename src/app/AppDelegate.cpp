#include "app/AppDelegate.h"

#include "platform/ChildProcess.h"
#include "statusserver/StatusServer.h"

#include <QCoreApplication>

namespace ostrelle
{

AppDelegate::AppDelegate(QObject *parent)
    : QObject(parent)
{
}

void AppDelegate::setServices(StatusServer *statusServer)
{
    m_statusServer = statusServer;
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
    if (m_statusServer) {
        m_statusServer->stop();
    }
    endAllChildren();
}

} // namespace ostrelle
