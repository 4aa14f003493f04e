#pragma once

#include <QProcessEnvironment>
#include <QString>

#include <chrono>
#include <optional>

namespace ostrelle
{

struct ShellResult {
    bool success = false; // the command ended with status 0
    QString output;       // both streams, trimmed; empty when it is not UTF-8
};

// Runs a command line in a login shell, whose whole environment is a search path and the home
// directory. A command that is not done in time is asked to end, and killed if it does not; the
// output then says that it timed out. Blocks: background threads only.
ShellResult runShell(const QString &command,
                     std::optional<std::chrono::milliseconds> timeout = std::nullopt);

// For a command that only looks at something: what takes longer hangs.
inline constexpr std::chrono::minutes checkTimeout{1};

// What runShell() gives to its commands.
QProcessEnvironment shellEnvironment();

// Whether a tool is on the search path of the user's login shell, or else where Linux users have
// it. Blocks.
bool isOnPath(const QString &tool);

// Path of the gateway's tool, empty when it is not there. Blocks.
QString gatewayCLI();

// The beginning of a command line that runs this tool or what it needs: puts its own folder first
// on the search path, if the tool was found where only Linux users have it. Looks at the disk.
QString searchPathFor(const QString &tool);

// Path of the Tailscale command-line tool; where there is none, of one that always fails. Blocks.
QString tailscaleCLI();

} // namespace ostrelle
