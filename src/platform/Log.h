#pragma once

#include <QByteArrayList>
#include <QString>

#include <chrono>

namespace ostrelle
{

// Prints one line on standard output. The line begins with its component in square brackets, for
// instance "[StatusServer] Listening on port 18794". Never waits for whoever reads it: a thread of
// its own does the printing, and where nobody takes the lines, in a terminal that was paused say,
// they are dropped and counted. Any thread.
void logLine(const QString &line);

// The same for what the libraries have to say, on standard error; a warning that they repeat is
// told once.
void logMessagesOfLibraries();

// From now on nothing is printed.
void onlyRememberLog();

// What was printed or dropped last, of both kinds, the oldest first, each line with its time of day
// before it. Any thread.
QByteArrayList recentLogLines();

// Waits until everything is printed; false when the time was not enough.
bool finishLog(std::chrono::milliseconds within);

} // namespace ostrelle
