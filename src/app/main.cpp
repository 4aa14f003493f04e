#include "app/AppDelegate.h"
#include "app/OstrelleApp.h"
#include "core/BackgroundWork.h"
#include "platform/Display.h"
#include "platform/Log.h"
#include "platform/Module.h"
#include "platform/ProcessSetup.h"
#include "platform/SingleInstance.h"
#include "platform/TerminationSignals.h"
#include "ui/DesktopModule.h"

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

// Without a display, or without the module, the program does everything but show itself.
DesktopModule *desktopModule()
{
    return hasDisplay() ? loadModuleAs<DesktopModule>(QString::fromLatin1(DesktopModule::name))
                        : nullptr;
}

std::unique_ptr<QCoreApplication> makeApplication(DesktopModule *desktop, int &argc, char **argv)
{
    return desktop != nullptr ? desktop->makeApplication(argc, argv)
                              : std::make_unique<QCoreApplication>(argc, argv);
}

// A later start of the program: with a link, or to see the panel.
void handleStart(OstrelleApp &app, Scene *scene, const QByteArray &link)
{
    if (!link.isEmpty()) {
        app.handleIncomingURL(QString::fromUtf8(link));
    } else if (scene != nullptr) {
        scene->openPanel();
    }
}

int run(SingleInstance &instance, DesktopModule *desktop, const QByteArray &link)
{
    AppDelegate delegate;
    OstrelleApp app(delegate);
    std::unique_ptr<Scene> scene;
    if (desktop != nullptr) {
        scene = desktop->makeScene(app.models(), [&app] { app.handOverServices(); });
    }
    delegate.applicationDidFinishLaunching(desktop);
    QObject::connect(&instance, &SingleInstance::started, &app,
                     [&](const QByteArray &message) { handleStart(app, scene.get(), message); });
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
    TerminationSignals::block();
    const QByteArray link = takeLink(std::span(argv, static_cast<std::size_t>(argc)));
    DesktopModule *const desktop = desktopModule();
    const auto application = makeApplication(desktop, argc, argv);
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
    endProcess(run(instance, desktop, link));
}
