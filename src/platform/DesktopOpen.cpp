#include "platform/DesktopOpen.h"

#include "platform/ChildProcess.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

void openWithDesktop(const QString &fileOrUrl)
{
    // setsid forks and ends at once: what it started is no child of ours and is not killed with us.
    static_cast<void>(
        runChild({.program = u"setsid"_s, .arguments = {u"--fork"_s, u"xdg-open"_s, fileOrUrl}},
                 {.capture = Capture::Nothing}));
}

} // namespace ostrelle
