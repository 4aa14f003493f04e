#include "tracker/JobList.h"

#include "core/Json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QUuid>

#include <algorithm>
#include <cmath>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;

// The largest instants that calendars are defined for, in ms on either side of the epoch.
constexpr double maxInstantMs = 8.64e15;

QString whole(double quotient)
{
    return QString::number(static_cast<qint64>(quotient));
}

QString cronSchedule(const JsonObject &schedule)
{
    const QString zone = schedule["tz"].string().value_or(QString());
    return u"cron: "_s + schedule["expr"].string().value_or(QString()) +
           (zone.isEmpty() ? QString() : u" ("_s + zone + u')');
}

QString intervalSchedule(const JsonObject &schedule)
{
    const qint64 everyMs = schedule["everyMs"].integer().value_or(0);
    const qint64 minutes = everyMs / 60'000;
    return everyMs >= 3'600'000 ? u"every "_s + QString::number(minutes / 60) + u'h'
                                : u"every "_s + QString::number(minutes) + u'm';
}

QString describeSchedule(const JsonObject &schedule)
{
    const QString kind = schedule["kind"].string().value_or(QString());
    if (kind == "cron"_L1) {
        return cronSchedule(schedule);
    }
    if (kind == "every"_L1) {
        return intervalSchedule(schedule);
    }
    return kind == "at"_L1 ? u"one-shot"_s : kind;
}

QString statusWord(const QString &lastStatus, bool enabled)
{
    if (!enabled) {
        return u"stopped"_s;
    }
    if (lastStatus == "ok"_L1) {
        return u"green"_s;
    }
    if (lastStatus == "error"_L1) {
        return u"red"_s;
    }
    const bool running = lastStatus == "running"_L1 || lastStatus == "active"_L1;
    return running ? u"blue"_s : u"yellow"_s;
}

QJsonValue relativeTime(const JsonValue &ms, const QDateTime &now)
{
    const auto number = ms.number();
    return number ? QJsonValue(formatRelativeTime(*number, now)) : QJsonValue();
}

QJsonValue firstLineOfMessage(const JsonValue &payload)
{
    const auto message = payload["message"].string();
    return message ? QJsonValue(message->section(u'\n', 0, 0)) : QJsonValue();
}

void insertState(QJsonObject &job, const JsonObject &state, bool enabled, const QDateTime &now)
{
    const QString lastStatus = state["lastStatus"].string().value_or(u"idle"_s);
    job.insert("status"_L1, statusWord(lastStatus, enabled));
    job.insert("lastRun"_L1, relativeTime(state["lastRunAtMs"], now));
    job.insert("nextRun"_L1, relativeTime(state["nextRunAtMs"], now));
}

QJsonObject convertJob(const JsonObject &job, const QDateTime &now)
{
    const bool enabled = job["enabled"].boolean().value_or(true);
    const JsonObject *schedule = job["schedule"].object();
    const auto id = job["id"].string();
    QJsonObject converted{
        {"id"_L1, id ? *id : QUuid::createUuid().toString(QUuid::WithoutBraces)},
        {"name"_L1, job["name"].string().value_or(u"Unnamed"_s)},
        {"schedule"_L1, schedule != nullptr ? describeSchedule(*schedule) : QString()},
        {"status"_L1, u"idle"_s},
        {"enabled"_L1, enabled},
        {"lastRun"_L1, QJsonValue()},
        {"nextRun"_L1, QJsonValue()},
        {"payload"_L1, firstLineOfMessage(job["payload"])}};
    if (const JsonObject *state = job["state"].object()) {
        insertState(converted, *state, enabled, now);
    }
    return converted;
}

} // namespace

std::optional<QByteArray> cronTrackerFromJobs(std::string_view output, const QDateTime &now)
{
    const auto document = parseJson(output);
    const JsonArray *jobs = document ? objectsIn(*document, "jobs") : nullptr;
    if (jobs == nullptr) {
        return std::nullopt;
    }
    QJsonArray converted;
    for (const JsonValue &job : *jobs) {
        converted.append(convertJob(*job.object(), now));
    }
    const QJsonObject tracker{{"version"_L1, 1},
                              {"updated"_L1, now.toUTC().toString(Qt::ISODate)},
                              {"jobs"_L1, converted}};
    return QJsonDocument(tracker).toJson(QJsonDocument::Indented);
}

QString formatRelativeTime(double msSinceEpoch, const QDateTime &now)
{
    const double ms = std::clamp(msSinceEpoch, -maxInstantMs, maxInstantMs);
    const double age = (static_cast<double>(now.toMSecsSinceEpoch()) - ms) / 1000;
    if (age < 0) {
        const double ahead = -age;
        if (ahead < hour) {
            return u"in "_s + whole(ahead / minute) + u'm';
        }
        if (ahead < day) {
            return u"in "_s + whole(ahead / hour) + u'h';
        }
        const auto instant = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(ms));
        return QLocale().toString(instant, u"MMM d, h:mm Ap"_s);
    }
    if (age < minute) {
        return u"just now"_s;
    }
    if (age < hour) {
        return whole(age / minute) + u"m ago"_s;
    }
    return age < day ? whole(age / hour) + u"h ago"_s : whole(age / day) + u"d ago"_s;
}

} // namespace ostrelle
