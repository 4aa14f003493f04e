#include "Sessions.h"

#include "CronJobs.h"

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 minuteMs = 60'000;

// Somebody who comes every so often, stays for a while, and is somebody new the next time (the %1
// of the key). Who stays as long as the pause lasts is always there.
QJsonObject visit(const World &world, QJsonObject session, int index)
{
    const QJsonValue play = session.take("play"_L1);
    const qint64 every = play["every"_L1].toInteger() * minuteMs;
    const QString name = u"visit/%1/"_s.arg(index);
    const auto shift = static_cast<qint64>(world.dice(name) % static_cast<quint64>(every));
    const qint64 number = (world.nowMs + shift) / every;
    const qint64 leavesMs = number * every - shift + play["stays"_L1].toInteger() * minuteMs;
    session[u"key"_s] = session["key"_L1].toString().replace(
        "%1"_L1, world.identity(name + QString::number(number)));
    session[u"updatedAt"_s] = qMin(world.nowMs, leavesMs);
    return session;
}

// A running job shows up twice: the job's session, and the session of this one run.
void addCronSessions(const World &world, QJsonArray &sessions)
{
    for (const QJsonValue job : listCronJobs(world)) {
        const QJsonValue state = job["state"_L1];
        if (state["lastStatus"_L1] != "running"_L1) {
            continue;
        }
        const QString key = u"agent:main:cron:"_s + job["id"_L1].toString();
        const QString started = QString::number(state["lastRunAtMs"_L1].toInteger());
        for (const QString &each : {key, key + u":run:"_s + world.identity(key + started)}) {
            sessions.append(QJsonObject{
                {u"key"_s, each}, {u"agentId"_s, u"main"_s}, {u"updatedAt"_s, world.nowMs}});
        }
    }
}

} // namespace

QJsonArray listSessions(const World &world)
{
    QJsonArray sessions;
    for (const QJsonValue session : scripted(u"sessions")) {
        sessions.append(visit(world, session.toObject(), static_cast<int>(sessions.size())));
    }
    addCronSessions(world, sessions);
    return sessions;
}

} // namespace ostrelle::simulator
