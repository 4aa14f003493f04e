#include "core/ProjectTracking.h"

#include "core/ToolEnvironment.h"
#include "platform/ChildProcess.h"
#include "platform/Paths.h"

#include <QFileInfo>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QStringList candidateScripts()
{
    QStringList scripts;
    if (const auto resources = resourceDirectory()) {
        scripts.append(*resources + u"/ostrelle-connector/enable-project-tracking.sh"_s);
    }
    scripts.append(homeDirectory() +
                   u"/.duskrell/workspace/projects/ostrelle-unified/skills/ostrelle-connector"
                   u"/scripts/enable-project-tracking.sh"_s);
    return scripts;
}

} // namespace

void enableProjectTrackingSkill()
{
    const QStringList scripts = candidateScripts();
    const auto script =
        std::ranges::find_if(scripts, [](const QString &path) { return QFileInfo(path).isFile(); });
    if (script == scripts.end()) {
        return;
    }
    static_cast<void>(runChild(
        {.program = u"/bin/bash"_s, .arguments = {*script}, .environment = toolEnvironment()},
        {.capture = Capture::Nothing, .killAfter = std::chrono::minutes(1)}));
}

} // namespace ostrelle
