#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <string_view>
#include <sys/types.h>

namespace ostrelle
{

// The process that a PID file with this content names, 1 or more; absent when it names none.
std::optional<pid_t> processNamedBy(std::string_view content);

// Writes the decimal process id, without a line end, in place of what was there. A failure is
// silent. Waits for the disk.
void writePidFile(const QString &path, qint64 pid);

// Asks the process that the file names to end, kills it after the grace, and removes the file. A
// file that names none is left alone. Blocks only on reading the file; any thread. When the program
// ends within the grace, the kill comes at once (std::exit runs it).
//
// The file outlives the process, and numbers are used again: a process that started after the file
// was written is a stranger and is spared, unless it is a child of this program. (The clock may
// have been set since the agent was started, which then seems to be the younger one.)
void killFromPidFile(const QString &path,
                     std::chrono::milliseconds grace = std::chrono::seconds(1));

// Kills at once whoever still has time left from killFromPidFile(); for the end of the program by
// other ways than std::exit. Any thread.
void killRemaining();

// To be called before the program registers exit handlers that use killFromPidFile(): what it needs
// is then still there when they run.
void prepareKills();

} // namespace ostrelle
