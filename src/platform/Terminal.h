#pragma once

#include <QString>

#include <expected>

namespace ostrelle
{

enum class TerminalProblem {
    NoTerminal, // no terminal program is installed
    Failed,     // it could not be started, or failed within half a second
};

// Opens a terminal window that runs an executable script, and goes on without it: the terminal
// outlives this program. Blocks for up to half a second: background threads only.
std::expected<void, TerminalProblem> openInTerminal(const QString &script);

} // namespace ostrelle
