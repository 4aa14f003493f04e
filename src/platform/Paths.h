#pragma once

#include <QString>

#include <optional>

namespace ostrelle
{

// The user's home directory as the platform reports it, without a trailing slash.
QString homeDirectory();

// The directory of the files that ship with the program: ../share/ostrelle beside the installed
// program, else resources beside it. Absent when neither exists.
std::optional<QString> resourceDirectory();

// A directory that only this user can enter, for sockets and locks that die with the session.
// Absent when there is none that is safe.
std::optional<QString> runtimeDirectory();

} // namespace ostrelle
