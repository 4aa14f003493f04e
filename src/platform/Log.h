#pragma once

#include <QString>

namespace ostrelle
{

// Prints one line on standard output and flushes it. The line begins with its component in square
// brackets, for instance "[StatusServer] Listening on port 18794". Any thread.
void logLine(const QString &line);

} // namespace ostrelle
