#include "core/LegacyAgent.h"

#include "platform/ChildProcess.h"

#include <QFile>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// A login shell, so that the user's own search path finds the tool. Only the end is waited for.
void runShell(const QString &command)
{
    static_cast<void>(runChild({.program = u"/bin/zsh"_s, .arguments = {u"-lc"_s, command}},
                               {.capture = Capture::Nothing}));
}

} // namespace

void disableLegacyAgent(const LegacyAgent &agent)
{
    runShell(u"launchctl bootout gui/$(id -u)/"_s + agent.label + u" 2>/dev/null || true"_s);
    runShell(u"launchctl unload '"_s + agent.plist + u"' 2>/dev/null || true"_s);
    runShell(u"launchctl remove '"_s + agent.label + u"' 2>/dev/null || true"_s);

    QFile::rename(agent.plist, agent.plist + u".disabled"_s); // never over an older one
}

} // namespace ostrelle
