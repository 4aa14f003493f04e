// A program that runs the status server and nothing else. Usage: bench-status-host PORT

#include "platform/ProcessSetup.h"
#include "settings/Settings.h"
#include "statusserver/StatusServer.h"

#include <QCoreApplication>

#include <cstdlib>

int main(int argc, char **argv)
{
    ostrelle::prepareProcess();
    const QCoreApplication application(argc, argv);
    ostrelle::OstrelleConfig config = ostrelle::OstrelleConfig::defaults();
    config.ports.status = argc > 1 ? std::atoi(argv[1]) : 0;
    ostrelle::StatusServer server(config, ostrelle::Settings().tokens);
    server.start();
    return QCoreApplication::exec();
}
