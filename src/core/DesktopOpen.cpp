#include "core/DesktopOpen.h"

#include "core/NotificationManager.h"
#include "platform/ChildProcess.h"
#include "platform/Log.h"
#include "platform/SearchPath.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

void openWithDesktop(const QString &fileOrUrl)
{
    const QString opener = u"xdg-open"_s;
    if (!findProgram(opener, qEnvironmentVariable("PATH"))) {
        const QString problem = u"Nothing here can open "_s + fileOrUrl + u": install xdg-utils"_s;
        logLine(u"[Ostrelle] "_s + problem);
        NotificationManager::send(notificationTitle, problem);
        return;
    }
    // setsid forks and ends at once: what it started is no child of ours and is not killed with us.
    static_cast<void>(
        runChild({.program = u"setsid"_s, .arguments = {u"--fork"_s, opener, fileOrUrl}},
                 {.capture = Capture::Nothing}));
}

} // namespace ostrelle
