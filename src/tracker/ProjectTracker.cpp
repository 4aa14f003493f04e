#include "tracker/ProjectTracker.h"

#include "tracker/RecordReader.h"

namespace ostrelle
{

namespace
{

using Problem = std::optional<QString>;

WorkstreamItem readWorkstream(const JsonValue &value, const QString &place, Problem &problem)
{
    const RecordReader reader(value, place, problem);
    return {.id = reader.string("id"),
            .name = reader.string("name"),
            .status = reader.string("status"),
            .progress = reader.integer("progress"),
            .note = reader.optionalString("note")};
}

ProjectItem readProject(const JsonValue &value, const QString &place, Problem &problem)
{
    const RecordReader reader(value, place, problem);
    return {.id = reader.string("id"),
            .name = reader.string("name"),
            .description = reader.string("description"),
            .status = reader.string("status"),
            .progress = reader.integer("progress"),
            .workstreams = reader.list<WorkstreamItem>(
                "workstreams", [&](const JsonValue &element, const QString &elementPlace) {
                    return readWorkstream(element, elementPlace, problem);
                })};
}

TrackerPayload readTracker(const JsonValue &value, Problem &problem)
{
    const RecordReader reader(value, {}, problem);
    return {.version = reader.integer("version"),
            .updated = reader.string("updated"),
            .projects = reader.list<ProjectItem>(
                "projects", [&](const JsonValue &element, const QString &place) {
                    return readProject(element, place, problem);
                })};
}

} // namespace

std::expected<TrackerPayload, QString> readProjectTracker(std::string_view text)
{
    return decodeStrictly<TrackerPayload>(text, readTracker);
}

} // namespace ostrelle
