#include "tracker/CronTracker.h"

#include "tracker/RecordReader.h"

#include <QUuid>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString randomId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

CronJobItem readJob(const JsonValue &value)
{
    const JsonObject job = value.object() != nullptr ? *value.object() : JsonObject();
    const auto id = job["id"].string();
    return {.id = id ? *id : randomId(),
            .name = job["name"].string().value_or(u"Unnamed Job"_s),
            .schedule = job["schedule"].string().value_or(QString()),
            .status = job["status"].string().value_or(u"idle"_s),
            .lastRun = job["lastRun"].string(),
            .nextRun = job["nextRun"].string(),
            .payload = job["payload"].string(),
            .enabled = job["enabled"].boolean().value_or(true)};
}

CronPayload readCron(const JsonValue &value, std::optional<QString> &problem)
{
    const RecordReader reader(value, {}, problem);
    return {.version = reader.integer("version"),
            .updated = reader.string("updated"),
            .jobs = reader.list<CronJobItem>("jobs", [](const JsonValue &element, const QString &) {
                return readJob(element);
            })};
}

} // namespace

std::expected<CronPayload, QString> readCronTracker(std::string_view text)
{
    return decodeStrictly<CronPayload>(text, readCron);
}

} // namespace ostrelle
