#pragma once

#include <QString>

namespace ostrelle
{

// Opens a terminal window that runs an executable script, and goes on without it: the terminal
// outlives this program. False when none is installed, or it failed within half a second. Blocks
// for that long: background threads only.
bool openInTerminal(const QString &script);

} // namespace ostrelle
