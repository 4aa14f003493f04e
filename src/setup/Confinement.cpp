#include "setup/Confinement.h"

#include "core/ToolEnvironment.h"
#include "platform/Paths.h"

#include <sys/prctl.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

bool isConfined()
{
    return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1;
}

ChildCommand asUnitOfItsOwn(const ChildCommand &command, const QString &searchPath)
{
    QStringList arguments{u"--user"_s, u"--quiet"_s, u"--collect"_s, u"--pipe"_s, u"--wait"_s};
    const QProcessEnvironment unit = command.environment.value_or(QProcessEnvironment());
    for (const QString &name : unit.keys()) {
        arguments.append(u"--setenv="_s + name + u'=' + unit.value(name));
    }
    QProcessEnvironment ours = toolEnvironment(searchPath);
    ours.insert(u"XDG_RUNTIME_DIR"_s, runtimeDirectory().value_or(QString()));
    return {.program = u"systemd-run"_s,
            .arguments = arguments + QStringList{u"--"_s, command.program} + command.arguments,
            .environment = ours};
}

} // namespace ostrelle
