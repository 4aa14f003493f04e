#include "app/AppDelegate.h"
#include "app/OstrelleApp.h"
#include "core/BackgroundWork.h"
#include "platform/Display.h"
#include "platform/Log.h"
#include "platform/ProcessSetup.h"
#include "platform/SingleInstance.h"
#include "platform/TerminationSignals.h"
#include "ui/MenuBarExtra.h"
#include "ui/TrayApplication.h"

#include <QCoreApplication>
#include <QTimer>

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

// Without a display the program does everything but show itself.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv)
{
    if (hasDisplay()) {
        return std::make_unique<TrayApplication>(argc, argv);
    }
    return std::make_unique<QCoreApplication>(argc, argv);
}

// The icon comes first: background work waits for it, so that what that starts does not take the
// processor from it.
class IconFirst
{
public:
    const TrayHostWatcher &hosts() const { return m_hosts; }

    void followIcon(const MenuBarExtra &scene)
    {
        QObject::connect(&scene, &MenuBarExtra::iconShown, &scene,
                         [this] { endSoon(hostTakesIconIn); });
        endSoon(iconPatience);
    }

    void end() { m_hold.reset(); }

private:
    static constexpr std::chrono::milliseconds hostTakesIconIn{30};
    static constexpr std::chrono::milliseconds iconPatience{200}; // there may be no host

    void endSoon(std::chrono::milliseconds delay)
    {
        QTimer::singleShot(delay, &m_hosts, [this] { end(); });
    }

    TrayHostWatcher m_hosts; // has asked the bus before background work is held
    std::optional<BackgroundHold> m_hold = std::make_optional<BackgroundHold>();
};

std::unique_ptr<MenuBarExtra> makeScene(OstrelleApp &app, IconFirst &start)
{
    auto scene = std::make_unique<MenuBarExtra>(app.models(), start.hosts());
    QObject::connect(scene.get(), &MenuBarExtra::panelAppeared, &app,
                     &OstrelleApp::handOverServices);
    start.followIcon(*scene);
    return scene;
}

// A later start of the program: with a link, or to see the panel.
void handleStart(OstrelleApp &app, MenuBarExtra *scene, const QByteArray &link)
{
    if (!link.isEmpty()) {
        app.handleIncomingURL(QString::fromUtf8(link));
    } else if (scene != nullptr) {
        scene->openPanel();
    }
}

int run(SingleInstance &instance, bool onDisplay, const QByteArray &link)
{
    const auto start = onDisplay ? std::make_unique<IconFirst>() : nullptr;
    AppDelegate delegate;
    OstrelleApp app(delegate);
    const auto scene = onDisplay ? makeScene(app, *start) : nullptr;
    delegate.applicationDidFinishLaunching(onDisplay);
    QObject::connect(&instance, &SingleInstance::started, &app,
                     [&](const QByteArray &message) { handleStart(app, scene.get(), message); });
    if (!link.isEmpty()) {
        app.handleIncomingURL(QString::fromUtf8(link));
    }
    const int status = QCoreApplication::exec();
    instance.release();
    if (start) {
        start->end();
    }
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
    const auto application = makeApplication(argc, argv);
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
    endProcess(run(instance, isOnDisplay(), link));
}
