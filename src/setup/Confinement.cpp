#include "setup/Confinement.h"

#include "core/ToolEnvironment.h"
#include "platform/Paths.h"
#include "platform/SearchPath.h"

#include <QLocalSocket>

#include <sys/prctl.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString systemdRun = u"systemd-run"_s;

// Always the same, so that there is never a second one beside the first.
const QString installerUnit = u"ostrelle-install.service"_s;

constexpr std::chrono::seconds patienceForUnits{10};

// The socket may have outlived whoever listened to it.
bool isListenedTo(const QString &path)
{
    constexpr int patience = 1000; // milliseconds
    QLocalSocket socket;
    socket.connectToServer(path);
    return socket.waitForConnected(patience);
}

} // namespace

bool isConfined()
{
    return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1;
}

bool InstallerUnit::canBeStarted() const
{
    const auto runtime = runtimeDirectory();
    return runtime && isListenedTo(*runtime + u"/systemd/private"_s) &&
           isListenedTo(*runtime + u"/bus"_s) && findProgram(systemdRun, m_searchPath);
}

bool InstallerUnit::isRunning() const
{
    const auto answer =
        runChild({.program = u"systemctl"_s,
                  .arguments = {u"--user"_s, u"--quiet"_s, u"is-active"_s, installerUnit},
                  .environment = environment()},
                 {.capture = Capture::Nothing, .killAfter = patienceForUnits});
    return answer && answer->exitedNormally && answer->exitStatus == 0;
}

ChildCommand InstallerUnit::starting(const ChildCommand &command) const
{
    QStringList arguments{u"--user"_s, u"--quiet"_s, u"--collect"_s, u"--pipe"_s,
                          u"--wait"_s, u"--unit"_s,  installerUnit};
    const QProcessEnvironment unit = command.environment.value_or(QProcessEnvironment());
    for (const QString &variable : unit.keys()) {
        arguments.append(u"--setenv="_s + variable + u'=' + unit.value(variable));
    }
    QStringList line = QStringList(command.program) + command.arguments;
    line.replaceInStrings(u"$"_s, u"$$"_s); // or the unit would put its own variables there
    return {.program = systemdRun,
            .arguments = arguments + QStringList(u"--"_s) + line,
            .environment = environment()};
}

QProcessEnvironment InstallerUnit::environment() const
{
    QProcessEnvironment ours = toolEnvironment(m_searchPath);
    ours.insert(u"XDG_RUNTIME_DIR"_s, runtimeDirectory().value_or(QString()));
    return ours;
}

} // namespace ostrelle
