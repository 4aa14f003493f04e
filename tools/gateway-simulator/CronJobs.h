#pragma once

#include "GatewayFiles.h"
#include "World.h"

#include <QJsonArray>

namespace ostrelle::simulator
{

// The name under which Ostrelle finds the job that writes the project tracker.
inline constexpr QLatin1StringView projectTrackerJob("OSTRELLE Project Tracker");

// The gateway's jobs in their order. They run by the clock; cron-state.json in the .duskrell
// directory keeps which were run by hand or removed.
QJsonArray listCronJobs(const World &world);

// Runs a job now; an unknown id is a problem. The project tracker's job writes its document.
Done runCronJob(const World &world, const QString &id);

Done removeCronJob(const World &world, const QString &id);

} // namespace ostrelle::simulator
