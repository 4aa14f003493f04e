#pragma once

#include <QString>

namespace ostrelle
{

// Writes the decimal process id, without a line end, in place of what was there. A failure is
// silent.
void writePidFile(const QString &path, qint64 pid);

// Asks the process that the file names to end, kills it a second later, and removes the file. A
// file that names none is left alone. Blocks only on reading the file; any thread. When the program
// ends within that second, the kill comes at once (std::exit runs it).
//
// The file outlives the process, and numbers are used again: a process that started after the file
// was written is a stranger and is spared.
void killFromPidFile(const QString &path);

// Kills at once whoever still has time left from killFromPidFile(); for the end of the program by
// other ways than std::exit. Any thread.
void killRemaining();

// To be called before the program registers exit handlers that use killFromPidFile(): what it needs
// is then still there when they run.
void prepareKills();

} // namespace ostrelle
