#include "gateway/ProjectTrackingSwitch.h"

#include "gateway/NetworkHelpers.h"
#include "platform/Files.h"

#include <algorithm>
#include <simdjson.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

using simdjson::dom::element;

QString findTool(const QStringList &paths)
{
    if (const auto path = std::ranges::find_if(paths, fileExists); path != paths.end()) {
        return *path;
    }
    return NetworkHelpers::runProcess(u"/usr/bin/env"_s, {u"which"_s, u"duskrell"_s}).trimmed();
}

std::optional<QString> trackerId(element job)
{
    std::string_view name;
    std::string_view id;
    if (job["name"].get(name) != simdjson::SUCCESS || name != "OSTRELLE Project Tracker" ||
        job["id"].get(id) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    return QString::fromUtf8(id.data(), static_cast<qsizetype>(id.size()));
}

// The ids of the project tracker's jobs; absent when the text is no list of jobs.
std::optional<QStringList> trackerIds(const std::string &listing)
{
    simdjson::dom::parser parser;
    simdjson::dom::array jobs;
    const auto document = parser.parse(listing);
    if (document["jobs"].get(jobs) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    QStringList ids;
    for (const element job : jobs) {
        if (!job.is_object()) {
            return std::nullopt;
        }
        // What begins like an option would be one for the tool.
        if (const auto id = trackerId(job); id && !id->startsWith(u'-')) {
            ids.append(*id);
        }
    }
    return ids;
}

} // namespace

bool disableProjectTracking(const QStringList &toolPaths)
{
    const QString tool = findTool(toolPaths);
    if (tool.isEmpty()) {
        return false;
    }
    const QString listing =
        NetworkHelpers::runProcess(tool, {u"cron"_s, u"list"_s, u"--json"_s, u"--all"_s});
    const auto ids = trackerIds(listing.toStdString());
    if (!ids) {
        return false;
    }
    for (const QString &id : *ids) {
        NetworkHelpers::runProcess(tool, {u"cron"_s, u"remove"_s, id});
    }
    return true;
}

} // namespace ostrelle
