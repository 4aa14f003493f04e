#include "gateway/ProjectTrackingSwitch.h"

#include "core/Json.h"
#include "core/ProjectTracking.h"
#include "core/ToolEnvironment.h"
#include "gateway/NetworkHelpers.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The ids of the project tracker's jobs; absent when the text is no list of jobs.
std::optional<QStringList> trackerIds(const std::string &listing)
{
    const auto document = parseJson(listing);
    const JsonArray *jobs = document ? objectsIn(*document, "jobs") : nullptr;
    if (jobs == nullptr) {
        return std::nullopt;
    }
    QStringList ids;
    for (const JsonValue &job : *jobs) {
        const auto id = job["id"].string();
        // What begins like an option would be one for the tool.
        if (id && !id->startsWith(u'-') && job["name"].isString(projectTrackerJob)) {
            ids.append(*id);
        }
    }
    return ids;
}

} // namespace

std::expected<void, TrackingSwitchProblem> disableProjectTracking(const QStringList &toolPaths)
{
    const auto tool = findTool(toolPaths, u"duskrell"_s, toolSearchPath());
    if (!tool) {
        return std::unexpected(TrackingSwitchProblem::NoTool);
    }
    const QString listing =
        NetworkHelpers::runProcess(*tool, {u"cron"_s, u"list"_s, u"--json"_s, u"--all"_s});
    const auto ids = trackerIds(listing.toStdString());
    if (!ids) {
        return std::unexpected(TrackingSwitchProblem::NoJobList);
    }
    for (const QString &id : *ids) {
        NetworkHelpers::runProcess(*tool, {u"cron"_s, u"remove"_s, id});
    }
    return {};
}

} // namespace ostrelle
