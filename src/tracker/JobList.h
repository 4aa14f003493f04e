#pragma once

#include <QByteArray>
#include <QDateTime>

#include <optional>
#include <string_view>

namespace ostrelle
{

// Turns the gateway tool's list of scheduled jobs into the cron tracker document, in the tool's
// order. Nothing when the text is no JSON object with a list of job objects.
std::optional<QByteArray> cronTrackerFromJobs(std::string_view output, const QDateTime &now);

// How long ago an instant was, or how far ahead it is, in one unit: "5m ago", "in 2h", "just now".
// An instant more than a day ahead is given as a date in local time.
QString formatRelativeTime(double msSinceEpoch, const QDateTime &now);

} // namespace ostrelle
