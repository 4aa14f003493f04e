#pragma once

#include "platform/Files.h"

#include <QByteArray>
#include <QString>

#include <expected>
#include <string_view>
#include <sys/types.h>

// Whatever ends the program or the machine in the middle of one of these, afterwards the file has
// its old content or its new one. They wait for the disk: not for the main thread.

namespace ostrelle
{

// Puts a new file in place of whatever stands at the path, with exactly this mode before a byte is
// written into it; never writes through a link. Whoever has the old file open goes on with that. A
// failure leaves nothing behind.
std::expected<void, FileProblem> replaceFile(const QString &path, std::string_view content,
                                             mode_t mode = ownerOnly);
std::expected<void, FileProblem> replaceFile(const QString &path, const QByteArray &content,
                                             mode_t mode = ownerOnly);

// The same with a file that is written already, in the same folder. It is removed on a failure.
std::expected<void, FileProblem> moveOver(const QString &written, const QString &path);

// Replaces whatever stands at the path in the same way, but not at once and without waiting for the
// disk: for a file that nobody needs after this run.
std::expected<void, FileProblem> createAnew(const QString &path, const QByteArray &content,
                                            mode_t mode);

// Replaces a file's content in place, so that links to it and readers that have it open see the new
// one; a missing one is created with `mode`. The new content is first saved beside the file, from
// where finishWriting() takes it after a run that did not come to the end; only where the folder is
// not writable it is not. On a full disk, at a quota or at a file size limit the old content stays.
std::expected<void, FileProblem> writeInPlace(const QString &path, std::string_view content,
                                              mode_t mode = ownerOnly);
std::expected<void, FileProblem> writeInPlace(const QString &path, const QByteArray &content,
                                              mode_t mode = ownerOnly);

// Before a file is read: does what a writeInPlace() of an earlier run has left undone. A file that
// was changed long after that stays as it is. False while that waits, for room on the disk say.
bool finishWriting(const QString &path);

// Gives a file that cannot be understood the name "<name>.broken", or the next free one after it,
// so that another can be written in its place; links to it stay. Returns the new name, or nothing
// when it could not be done.
std::optional<QString> setAside(const QString &path);

// Where a path leads to through symbolic links, also when there is no file yet.
QString fileBehind(const QString &path);

} // namespace ostrelle
