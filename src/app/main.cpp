#include "app/AppDelegate.h"
#include "app/OstrelleApp.h"
#include "core/BackgroundWork.h"
#include "platform/Log.h"
#include "platform/ProcessSetup.h"
#include "platform/SingleInstance.h"

#include <QCoreApplication>

#include <cstdlib>

namespace
{

using namespace ostrelle;
using namespace Qt::StringLiterals;

// The link that the desktop opens the program with, if any.
QString linkAmong(const QStringList &arguments)
{
    const QStringList links = arguments.sliced(1).filter(u":"_s);
    return links.isEmpty() ? QString() : links.first();
}

// Work that hangs in the background shall not keep the program from ending.
int finish(int status)
{
    if (!finishBackgroundWork(std::chrono::milliseconds(500))) {
        std::_Exit(status);
    }
    return status;
}

int run(SingleInstance &instance, const QString &link)
{
    AppDelegate delegate;
    OstrelleApp app(delegate);
    delegate.applicationDidFinishLaunching();
    QObject::connect(&instance, &SingleInstance::started, &app, [&app](const QByteArray &message) {
        app.handleIncomingURL(QString::fromUtf8(message));
    });
    if (!link.isEmpty()) {
        app.handleIncomingURL(link);
    }
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    prepareProcess();
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"ostrelle"_s);

    const QString link = linkAmong(QCoreApplication::arguments());
    SingleInstance instance;
    switch (instance.claim(link.toUtf8())) {
    case SingleInstance::Role::HandedOver:
        return EXIT_SUCCESS;
    case SingleInstance::Role::Refused:
        logLine(u"[Ostrelle] Already running, but the running program does not answer"_s);
        return EXIT_FAILURE;
    case SingleInstance::Role::First:
        break;
    }
    return finish(run(instance, link));
}
