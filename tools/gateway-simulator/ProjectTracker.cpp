#include "ProjectTracker.h"

#include "platform/FileWriting.h"
#include "platform/Paths.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 quarterMs = 900'000;

QString trackerPath()
{
    return homeDirectory() + u"/.ostrelle/ostrelle-project-tracker.json"_s;
}

// Work that reaches its end begins anew, so that a demo always has something under way.
QJsonObject workstreamAt(QJsonObject stream, qint64 nowMs)
{
    const qint64 perHour = stream.take("play"_L1)["perHour"_L1].toInteger();
    const qint64 done = nowMs / quarterMs * perHour / 4;
    stream[u"progress"_s] = (stream["progress"_L1].toInteger() + done) % 101;
    return stream;
}

QJsonObject projectAt(QJsonObject project, qint64 nowMs)
{
    QJsonArray streams;
    qint64 sum = 0;
    for (const QJsonValue scriptedStream : project["workstreams"_L1].toArray()) {
        const QJsonObject stream = workstreamAt(scriptedStream.toObject(), nowMs);
        sum += stream["progress"_L1].toInteger();
        streams.append(stream);
    }
    project[u"workstreams"_s] = streams;
    project[u"progress"_s] = sum / qMax(streams.size(), qsizetype{1});
    return project;
}

} // namespace

Done writeProjectTracker(const World &world)
{
    QJsonArray projects;
    for (const QJsonValue project : scripted(u"projects")) {
        projects.append(projectAt(project.toObject(), world.nowMs));
    }
    const auto now = QDateTime::fromMSecsSinceEpoch(world.nowMs);
    const QJsonObject tracker = {{u"version"_s, 1},
                                 {u"updated"_s, now.toString(u"MMM d, h:mm AP"_s)},
                                 {u"projects"_s, projects}};
    QDir().mkpath(QFileInfo(trackerPath()).path());
    const auto written = writeInPlace(trackerPath(), QJsonDocument(tracker).toJson());
    if (!written) {
        return std::unexpected(trackerPath() + u": "_s + written.error().text);
    }
    return {};
}

Done fillEmptyProjectTracker(const World &world)
{
    const auto tracker = readObject(trackerPath());
    if (!tracker || !tracker->value("projects"_L1).toArray().isEmpty()) {
        return {};
    }
    return writeProjectTracker(world);
}

} // namespace ostrelle::simulator
