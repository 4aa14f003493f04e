#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace ostrelle
{

// The user's home directory as the platform reports it, without a trailing slash.
QString homeDirectory();

// Qt 6.4 finds out where the program is when it is first asked, and keeps that without a lock: two
// threads that ask at the same moment corrupt the heap. Main thread, as soon as there is an
// application object, before another thread can ask.
void settleProgramPlace();

// The directory of the files that ship with the program: where they are installed to, as seen from
// the program, else resources beside it. One with nothing in it counts as none.
std::optional<QString> resourceDirectory();

// A directory that only this user can enter, for sockets and locks that die with the session.
// Absent when there is none that is safe.
std::optional<QString> runtimeDirectory();

// A directory that only this user can enter and whose files can be run: the runtime directory if it
// allows that, else one below the home, which is created. Absent when neither can be used.
std::optional<QString> privateTemporaryDirectory();

// The directory below the home of the two; it is made. Absent when it cannot be had.
std::optional<QString> privateHomeDirectory();

// Both of these places, in that order, for cleaning up what an earlier run of the program has left.
QStringList privateTemporaryPlaces();

} // namespace ostrelle
