#include "dashboards/ProjectTrackerJob.h"

#include "core/Json.h"
#include "core/ProjectTracking.h"
#include "core/ToolEnvironment.h"
#include "platform/SearchPath.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The id of the first job with the tracker's name; absent when the output is no list of jobs.
std::optional<QString> projectTrackerJobIn(const QString &output)
{
    const auto document = parseJson(output.toStdString());
    const JsonArray *jobs = document ? objectsIn(*document, "jobs") : nullptr;
    if (jobs == nullptr) {
        return std::nullopt;
    }
    const auto job = std::ranges::find_if(
        *jobs, [](const JsonValue &value) { return value["name"].isString(projectTrackerJob); });
    return job != jobs->end() ? (*job)["id"].string() : std::nullopt;
}

} // namespace

std::expected<void, TrackerJobProblem> runProjectTrackerJob(
    const std::function<QString(const QString &program, const QStringList &args)> &runProcess)
{
    QString cli = runProcess(u"/usr/bin/env"_s, {u"which"_s, u"duskrell"_s}).trimmed();
    if (!isTrustworthyFile(cli)) {
        cli = findUserTool(u"duskrell"_s).value_or(QString());
    }
    if (cli.isEmpty()) {
        return std::unexpected(TrackerJobProblem::NoTool);
    }
    const auto job =
        projectTrackerJobIn(runProcess(cli, {u"cron"_s, u"list"_s, u"--json"_s, u"--all"_s}));
    if (!job || job->startsWith(u'-')) { // which would be an option for the tool
        return std::unexpected(TrackerJobProblem::NoJob);
    }
    runProcess(cli, {u"cron"_s, u"run"_s, *job});
    return {};
}

} // namespace ostrelle
