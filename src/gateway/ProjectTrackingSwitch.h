#pragma once

#include <QStringList>

namespace ostrelle
{

// Where the gateway's tool is looked for before the search path.
inline QStringList usualDuskrellPaths()
{
    return {QStringLiteral("/opt/homebrew/bin/duskrell"),
            QStringLiteral("/usr/local/bin/duskrell")};
}

// Removes the project tracker's jobs from the gateway with its tool. False when the tool is missing
// or does not list its jobs. Runs child processes: background threads only.
bool disableProjectTracking(const QStringList &toolPaths = usualDuskrellPaths());

} // namespace ostrelle
