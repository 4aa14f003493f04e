#include "app/RunProgram.h"

#include "app/AppDelegate.h"
#include "app/OstrelleApp.h"
#include "control/ControlServer.h"
#include "core/BackgroundWork.h"
#include "platform/ChildProcess.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "platform/ProcessSetup.h"
#include "platform/SingleInstance.h"
#include "platform/TerminationSignals.h"

#include <QCoreApplication>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Nobody may be there to take the last lines.
constexpr std::chrono::milliseconds patienceForLog{200};

// For the main thread to end the program that was told to end.
constexpr std::chrono::milliseconds patienceForMainThread{700};

// Without destroying what a thread that hangs in the background may still use. Any thread; the
// first one does it.
[[noreturn]] void endProcess(int status)
{
    static std::atomic_flag isEnding;
    while (isEnding.test_and_set()) {
        ::pause();
    }
    static_cast<void>(finishLog(patienceForLog));
#ifdef __SANITIZE_ADDRESS__
    __lsan_do_leak_check();
#endif
    std::quick_exit(status);
}

// The main thread hangs, in a call to the desktop say.
void endWithoutMainThread()
{
    endAllChildren();
    endProcess(EXIT_SUCCESS);
}

// A later start of the program: with a link, or to see the panel.
void handleStart(OstrelleApp &app, Face *face, const QByteArray &link)
{
    if (!link.isEmpty()) {
        app.handleIncomingURL(QString::fromUtf8(link));
    } else if (face != nullptr) {
        face->openPanel();
    }
}

// Answers ostrellectl; made when it first asks.
class Control
{
public:
    Control(OstrelleApp &app, Face *face)
        : m_app(app)
        , m_face(face)
    {
    }

    void answer(Conversation *conversation)
    {
        if (!m_server) {
            m_server.emplace(context());
        }
        m_server->ask(conversation->line(), conversation,
                      [conversation](const QByteArray &line) { conversation->answer(line); });
    }

private:
    ControlContext context() const
    {
        ControlContext context{.models = m_app.models(),
                               .version = QStringLiteral(OSTRELLE_VERSION)};
        if (m_face != nullptr) {
            context.openPanel = [face = m_face] { face->openPanel(); };
        }
        return context;
    }

    OstrelleApp &m_app;
    Face *const m_face; // null without a display
    std::optional<ControlServer> m_server;
};

[[noreturn]] void run(SingleInstance &instance, const QByteArray &link, MakeFace makeFace)
{
    auto face = makeFace != nullptr ? makeFace() : nullptr;
    AppDelegate delegate;
    OstrelleApp app(delegate);
    if (face) {
        face->show(app);
    }
    delegate.applicationDidFinishLaunching(face.get());
    QObject::connect(&instance, &SingleInstance::started, &app,
                     [&](const QByteArray &message) { handleStart(app, face.get(), message); });
    Control control(app, face.get());
    QObject::connect(&instance, &SingleInstance::asked, &app,
                     [&](Conversation *conversation) { control.answer(conversation); });
    if (!link.isEmpty()) {
        app.handleIncomingURL(QString::fromUtf8(link));
    }
    const int status = QCoreApplication::exec();
    instance.release();
    face.reset();
    static_cast<void>(finishBackgroundWork(std::chrono::milliseconds(350)));
    endProcess(status);
}

} // namespace

void prepareProgram()
{
    prepareProcess();
    ensureHome();
    acceptAnyBusAtItsAddress();
    if (!TerminationSignals::watch(patienceForMainThread, &endWithoutMainThread)) {
        // The log would need a thread, too.
        std::fputs("[Ostrelle] Not started: the system has no thread to spare\n", stderr);
        std::exit(EXIT_FAILURE);
    }
    logMessagesOfLibraries();
}

int runProgram(const QByteArray &link, MakeFace makeFace)
{
    QCoreApplication::setApplicationName(u"ostrelle"_s);
    settleProgramPlace();
    SingleInstance instance;
    switch (instance.claim(link)) {
    case SingleInstance::Role::HandedOver:
        return EXIT_SUCCESS;
    case SingleInstance::Role::Refused:
        logLine(u"[Ostrelle] Already running, but the running program does not answer"_s);
        static_cast<void>(finishLog(patienceForLog));
        return EXIT_FAILURE;
    case SingleInstance::Role::First:
        logLine(u"[Ostrelle] Version " OSTRELLE_VERSION ""_s);
        run(instance, link, makeFace);
    }
    Q_UNREACHABLE();
}

} // namespace ostrelle
