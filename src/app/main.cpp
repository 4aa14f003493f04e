#include "app/AppDelegate.h"
#include "app/OstrelleApp.h"
#include "core/BackgroundWork.h"
#include "platform/Log.h"
#include "platform/ProcessSetup.h"
#include "platform/SingleInstance.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace
{

using namespace ostrelle;
using namespace Qt::StringLiterals;

// Takes the link that the desktop opens the program with, if any. It may carry a token, so it does
// not stay on the command line, which every user can read.
QByteArray takeLink(std::span<char *> arguments)
{
    for (char *argument : arguments.subspan(std::min<std::size_t>(arguments.size(), 1))) {
        const QByteArray text(argument);
        if (text.contains(':')) {
            std::ranges::fill(argument, argument + text.size(), '\0');
            return text;
        }
    }
    return {};
}

// Without destroying what a thread that hangs in the background may still use.
[[noreturn]] void endProcess(int status)
{
    std::fflush(stdout);
#ifdef __SANITIZE_ADDRESS__
    __lsan_do_leak_check();
#endif
    std::quick_exit(status);
}

int run(SingleInstance &instance, const QByteArray &link)
{
    AppDelegate delegate;
    OstrelleApp app(delegate);
    delegate.applicationDidFinishLaunching();
    QObject::connect(&instance, &SingleInstance::started, &app, [&app](const QByteArray &message) {
        app.handleIncomingURL(QString::fromUtf8(message));
    });
    if (!link.isEmpty()) {
        app.handleIncomingURL(QString::fromUtf8(link));
    }
    const int status = QCoreApplication::exec();
    instance.release();
    // What answers to the application has to be over before the application goes.
    if (!finishBackgroundWork(std::chrono::milliseconds(500))) {
        endProcess(status);
    }
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    prepareProcess();
    const QByteArray link = takeLink(std::span(argv, static_cast<std::size_t>(argc)));
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"ostrelle"_s);

    SingleInstance instance;
    switch (instance.claim(link)) {
    case SingleInstance::Role::HandedOver:
        return EXIT_SUCCESS;
    case SingleInstance::Role::Refused:
        logLine(u"[Ostrelle] Already running, but the running program does not answer"_s);
        return EXIT_FAILURE;
    case SingleInstance::Role::First:
        break;
    }
    endProcess(run(instance, link));
}
