#include "setup/SetupShell.h"

#include "core/ShellWord.h"
#include "core/ToolEnvironment.h"
#include "platform/ChildProcess.h"
#include "platform/SearchPath.h"

#include <QFileInfo>

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto timeToEnd = 2s; // for a command whose time is up

QString decoded(const QByteArray &output)
{
    return output.isValidUtf8() ? QString::fromUtf8(output).trimmed() : QString();
}

QString timedOut(std::chrono::milliseconds timeout)
{
    return u"Command timed out after %1s"_s.arg(timeout / 1s);
}

} // namespace

QProcessEnvironment shellEnvironment()
{
    return toolEnvironment(toolSearchPath() + u":/usr/sbin:/sbin"_s);
}

ShellResult runShell(const QString &command, std::optional<std::chrono::milliseconds> timeout)
{
    const auto result =
        runChild({.program = u"/bin/bash"_s,
                  .arguments = {u"-lc"_s, command},
                  .environment = shellEnvironment()},
                 {.capture = Capture::Merged, .killAfter = timeout, .killGrace = timeToEnd});
    if (!result) {
        const bool isLate = result.error().kind == ChildFailure::Kind::TimedOut && timeout;
        return {.success = false, .output = isLate ? timedOut(*timeout) : result.error().text};
    }
    return {.success = result->exitedNormally && result->exitStatus == 0,
            .output = decoded(result->output)};
}

bool isOnPath(const QString &tool)
{
    return runShell(u"which "_s + tool, checkTimeout).success || findUserTool(tool);
}

QString gatewayCLI()
{
    const ShellResult found =
        runShell(u"PATH=/opt/homebrew/bin:/usr/local/bin:$PATH which duskrell"_s, checkTimeout);
    return found.success && isTrustworthyFile(found.output)
               ? found.output
               : findUserTool(u"duskrell"_s).value_or(QString());
}

QString searchPathFor(const QString &tool)
{
    QStringList folders = userToolFolders();
    const QString own = QFileInfo(tool).path();
    return folders.removeAll(own) == 0 ? QString()
                                       : u"export PATH="_s + quoted(own) + u":$PATH:"_s +
                                             quoted(folders.join(u':')) + u'\n';
}

QString tailscaleCLI()
{
    if (const ShellResult found = runShell(u"which tailscale 2>/dev/null"_s, checkTimeout);
        found.success && isTrustworthyFile(found.output)) {
        return found.output;
    }
    // The bare name could be that of a tool that was passed over.
    return findTool({u"/usr/local/bin/tailscale"_s, u"/opt/homebrew/bin/tailscale"_s,
                     u"/Applications/Tailscale.app/Contents/MacOS/Tailscale"_s},
                    u"tailscale"_s, toolSearchPath())
        .value_or(u"/usr/bin/false"_s);
}

} // namespace ostrelle
