#pragma once

#include <QList>
#include <QString>

#include <expected>
#include <optional>
#include <string_view>

namespace ostrelle
{

// One strand of work in a project.
struct WorkstreamItem {
    QString id;
    QString name;
    QString status;
    qint64 progress = 0; // percent
    std::optional<QString> note = std::nullopt;

    const QString &identity() const { return id; }
    friend bool operator==(const WorkstreamItem &, const WorkstreamItem &) = default;
};

// One project.
struct ProjectItem {
    QString id;
    QString name;
    QString description;
    QString status;      // a colour word; "green" is healthy
    qint64 progress = 0; // percent
    QList<WorkstreamItem> workstreams;

    const QString &identity() const { return id; }
    friend bool operator==(const ProjectItem &, const ProjectItem &) = default;
};

// The project tracker document, which the gateway's side writes and this program only reads.
struct TrackerPayload {
    qint64 version = 1;
    QString updated; // display text
    QList<ProjectItem> projects;

    friend bool operator==(const TrackerPayload &, const TrackerPayload &) = default;
};

// Strict: the first missing or wrongly typed member is the error, with its place.
std::expected<TrackerPayload, QString> readProjectTracker(std::string_view text);

} // namespace ostrelle
