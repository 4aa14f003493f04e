#pragma once

#include "core/ToolEnvironment.h"

#include <QStringList>

#include <expected>

namespace ostrelle
{

enum class TrackingSwitchProblem {
    NoTool,
    NoJobList, // the tool does not list its jobs
};

// Removes the project tracker's jobs from the gateway with its tool. Runs child processes:
// background threads only.
std::expected<void, TrackingSwitchProblem>
disableProjectTracking(const QStringList &toolPaths = gatewayToolPlaces());

} // namespace ostrelle
