#pragma once

#include <QList>
#include <QString>

#include <expected>
#include <optional>
#include <string_view>

namespace ostrelle
{

// One scheduled job, ready for display.
struct CronJobItem {
    QString id;
    QString name;
    QString schedule; // for instance "cron: 0 9 * * * (Europe/Berlin)" or "every 15m"
    QString status;   // "green", "red", "blue", "yellow", "stopped" or "idle"
    std::optional<QString> lastRun = std::nullopt; // for instance "5m ago"
    std::optional<QString> nextRun = std::nullopt; // for instance "in 20m"
    std::optional<QString> payload = std::nullopt; // first line of the job's message
    bool enabled = true;

    const QString &identity() const { return id; }
    friend bool operator==(const CronJobItem &, const CronJobItem &) = default;
};

// The cron tracker document.
struct CronPayload {
    qint64 version = 1;
    QString updated; // ISO 8601, or empty when no pass has written it yet
    QList<CronJobItem> jobs;

    friend bool operator==(const CronPayload &, const CronPayload &) = default;
};

// Strict at the top level. A job never fails the document: members that are missing or odd take
// their fallbacks, and a job without an id gets a random one.
std::expected<CronPayload, QString> readCronTracker(std::string_view text);

} // namespace ostrelle
