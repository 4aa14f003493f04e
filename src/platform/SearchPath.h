#pragma once

#include <QString>

#include <optional>

namespace ostrelle
{

// Programs are started by name from a list of folders, as in PATH. Where anybody may put a program
// into a folder, or write into the program, it is not ours to run: the folder or the program is
// passed over, which is told once with a log line. Any thread.

// The list without such folders, and without those that depend on the working directory. Never
// empty, for that would mean the working directory too.
QString withoutOpenFolders(const QString &searchPath);

// The first program of that name; absent when there is none.
std::optional<QString> findProgram(const QString &name, const QString &searchPath);

// True for an existing file that nobody but its owner, the owner's group and root can have put
// there or changed.
bool isTrustworthyFile(const QString &path);

} // namespace ostrelle
