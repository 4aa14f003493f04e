#include "control/ControlServer.h"
#include "platform/Log.h"
#include "platform/Paths.h"

#include <QCoreApplication>
#include <QTimer>

// Called by ostrellectl, by this name, where no program runs: answers the line of a request from
// the files. Calls `take` with the line of the answer, once, and returns then. The caller ends the
// process soon, without destroying what a thread that hangs in the background may still use.
extern "C" void answerAlone(const char *line, void (*take)(void *taker, const char *answer),
                            void *taker)
{
    ostrelle::onlyRememberLog(); // the output is somebody else's
    int count = 1;
    char name[] = "ostrellectl";
    char *arguments[] = {name, nullptr};
    ostrelle::logMessagesOfLibraries();
    QCoreApplication application(count, arguments);
    ostrelle::settleProgramPlace();
    const ostrelle::Models models{.settings = ostrelle::Settings()};
    const ostrelle::ControlServer server(
        {.models = models, .version = QStringLiteral(OSTRELLE_VERSION), .isRunning = false});
    server.ask(line, &application, [take, taker](const QByteArray &answer) {
        take(taker, answer.constData());
        // Later: the answer may be there before exec(), which forgets what was quit before it.
        QTimer::singleShot(0, &QCoreApplication::quit);
    });
    QCoreApplication::exec();
}
