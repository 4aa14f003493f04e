#pragma once

#include <QStringList>

#include <expected>

namespace ostrelle
{

// Where the gateway's tool is looked for before the search path.
inline QStringList usualDuskrellPaths()
{
    return {QStringLiteral("/opt/homebrew/bin/duskrell"),
            QStringLiteral("/usr/local/bin/duskrell")};
}

enum class TrackingSwitchProblem {
    NoTool,
    NoJobList, // the tool does not list its jobs
};

// Removes the project tracker's jobs from the gateway with its tool. Runs child processes:
// background threads only.
std::expected<void, TrackingSwitchProblem>
disableProjectTracking(const QStringList &toolPaths = usualDuskrellPaths());

} // namespace ostrelle
