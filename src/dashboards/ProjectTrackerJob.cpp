#include "dashboards/ProjectTrackerJob.h"

#include "tracker/Json.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The id of the first job of that name in the tool's list, when the list is one of jobs.
std::optional<QString> projectTrackerJobIn(const QString &output)
{
    const auto document = parseJson(output.toStdString());
    const JsonObject *root = document ? document->object() : nullptr;
    const JsonArray *jobs = root != nullptr ? (*root)["jobs"].array() : nullptr;
    const auto isObject = [](const JsonValue &job) { return job.object() != nullptr; };
    if (jobs == nullptr || !std::ranges::all_of(*jobs, isObject)) {
        return std::nullopt;
    }
    const auto job = std::ranges::find_if(*jobs, [](const JsonValue &value) {
        return (*value.object())["name"].string() == u"OSTRELLE Project Tracker"_s;
    });
    return job != jobs->end() ? (*job->object())["id"].string() : std::nullopt;
}

} // namespace

bool runProjectTrackerJob(
    const std::function<QString(const QString &program, const QStringList &args)> &runProcess)
{
    const QString cli = runProcess(u"/usr/bin/env"_s, {u"which"_s, u"duskrell"_s}).trimmed();
    if (cli.isEmpty()) {
        return false;
    }
    const auto job =
        projectTrackerJobIn(runProcess(cli, {u"cron"_s, u"list"_s, u"--json"_s, u"--all"_s}));
    if (!job || job->startsWith(u'-')) { // which would be an option for the tool
        return false;
    }
    runProcess(cli, {u"cron"_s, u"run"_s, *job});
    return true;
}

} // namespace ostrelle
