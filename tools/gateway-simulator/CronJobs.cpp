#include "CronJobs.h"

#include "ProjectTracker.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 hourMs = 3'600'000;
constexpr qint64 oneShotEveryMs = 4 * hourMs;

struct Times {
    qint64 lastMs = 0;
    qint64 nextMs = 0;
};

Times repeatedly(qint64 nowMs, qint64 everyMs)
{
    const qint64 last = nowMs - nowMs % everyMs;
    return {last, last + everyMs};
}

// Of the five fields of an expression the script uses minute, hour and day of the week.
Times byCalendar(const QJsonValue &schedule, qint64 nowMs)
{
    const QStringList fields = schedule["expr"_L1].toString().split(u' ');
    const QTime time(fields.value(1).toInt(), fields.value(0).toInt());
    const int weekday = fields.value(4).toInt(); // 0: any
    const QTimeZone named(schedule["tz"_L1].toString().toLatin1());
    const QTimeZone zone = named.isValid() ? named : QTimeZone::systemTimeZone();
    const QDate today = QDateTime::fromMSecsSinceEpoch(nowMs, zone).date();
    Times times;
    // A week to both sides holds every day of the week, whatever the clocks do meanwhile.
    for (QDate day = today.addDays(-8); times.nextMs == 0; day = day.addDays(1)) {
        if (weekday == 0 || day.dayOfWeek() == weekday) {
            const qint64 at = QDateTime(day, time, zone).toMSecsSinceEpoch();
            (at <= nowMs ? times.lastMs : times.nextMs) = at;
        }
    }
    return times;
}

Times timesOf(const QJsonObject &job, qint64 nowMs)
{
    const QJsonValue schedule = job["schedule"_L1];
    if (!job["enabled"_L1].toBool()) {
        return {repeatedly(nowMs, 24 * hourMs).lastMs - 72 * hourMs, 0};
    }
    if (schedule["kind"_L1] == "at"_L1) {
        return {0, repeatedly(nowMs, oneShotEveryMs).nextMs};
    }
    return schedule["kind"_L1] == "cron"_L1 ? byCalendar(schedule, nowMs)
                                            : repeatedly(nowMs, schedule["everyMs"_L1].toInteger());
}

QString statusOf(const World &world, const QJsonObject &job, const QJsonValue &play, qint64 lastMs)
{
    if (world.nowMs - lastMs < play["takes"_L1].toInteger() * 1000) {
        return u"running"_s;
    }
    const auto failsOneIn = static_cast<quint64>(play["failsOneIn"_L1].toInteger());
    const quint64 dice = world.dice(job["id"_L1].toString() + QString::number(lastMs));
    return failsOneIn > 0 && dice % failsOneIn == 0 ? u"error"_s : u"ok"_s;
}

QJsonObject stateOf(const World &world, const QJsonObject &job, const QJsonValue &play,
                    qint64 byHandMs)
{
    const Times times = timesOf(job, world.nowMs);
    QJsonObject state;
    if (const qint64 lastMs = qMax(times.lastMs, byHandMs); lastMs > 0) {
        state[u"lastRunAtMs"_s] = lastMs;
        state[u"lastStatus"_s] = statusOf(world, job, play, lastMs);
    }
    if (times.nextMs > 0) {
        state[u"nextRunAtMs"_s] = times.nextMs;
    }
    return state;
}

QJsonObject cronJob(const World &world, QJsonObject job, const QJsonValue &runsByHand)
{
    const QJsonValue play = job.take("play"_L1);
    const QString id = world.identity(job["name"_L1].toString());
    job[u"id"_s] = id;
    job[u"agentId"_s] = u"main"_s;
    if (!play["hasNoState"_L1].toBool()) {
        job[u"state"_s] = stateOf(world, job, play, runsByHand[id].toInteger());
    }
    return job;
}

// Changes one member of cron-state.json for a job that there is.
template<typename Change>
Done noteOf(const World &world, const QString &id, const Change &change)
{
    const QJsonArray jobs = listCronJobs(world);
    if (std::ranges::none_of(jobs, [&](const QJsonValue &job) { return job["id"_L1] == id; })) {
        return std::unexpected(u"Unknown cron job: "_s + id);
    }
    return updateObject(gatewayPath(u"cron-state.json"_s), [&](QJsonObject &state) {
        change(state);
        return Done();
    });
}

} // namespace

QJsonArray listCronJobs(const World &world)
{
    const QJsonObject state = readObject(gatewayPath(u"cron-state.json"_s)).value_or(QJsonObject());
    const QJsonArray removed = state["removed"_L1].toArray();
    QJsonArray jobs;
    for (const QJsonValue scriptedJob : scripted(u"jobs")) {
        const QJsonObject job = cronJob(world, scriptedJob.toObject(), state["runs"_L1]);
        if (!removed.contains(job["id"_L1])) {
            jobs.append(job);
        }
    }
    return jobs;
}

Done runCronJob(const World &world, const QString &id)
{
    auto noted = noteOf(world, id, [&](QJsonObject &state) {
        QJsonObject runs = state["runs"_L1].toObject();
        runs[id] = world.nowMs;
        state[u"runs"_s] = runs;
    });
    const bool writesTracker = noted && id == world.identity(projectTrackerJob);
    return writesTracker ? writeProjectTracker(world) : noted;
}

Done removeCronJob(const World &world, const QString &id)
{
    return noteOf(world, id, [&](QJsonObject &state) {
        QJsonArray removed = state["removed"_L1].toArray();
        removed.append(id);
        state[u"removed"_s] = removed;
    });
}

} // namespace ostrelle::simulator
