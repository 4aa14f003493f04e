#pragma once

namespace ostrelle
{

// Prepares the process at the very start of main(), before any thread exists: ignores SIGPIPE and
// SIGXFSZ, so that a closed peer and a file size limit are errors and not the end, and raises the
// soft limit of open descriptors to the hard one, for thousands of idle status clients.
void prepareProcess();

// Undoes prepareProcess() and unblocks every signal; for a child process between fork and exec.
// Async-signal-safe.
void restoreForChild() noexcept;

} // namespace ostrelle
