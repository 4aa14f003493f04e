#pragma once

namespace ostrelle
{

// Prepares the process at the very start of main(), before any thread exists: ignores SIGPIPE and
// SIGXFSZ, so that a closed peer and a file size limit are errors and not the end, and raises the
// soft limit of open descriptors to the hard one, for thousands of idle status clients. What it
// creates is only for its user, and no memory with secrets is left behind by a crash.
void prepareProcess();

// Gives the environment, and so whatever looks there, the user's home where it names none. Before
// there are threads.
void ensureHome();

// Takes the bus's identity out of the session bus's address: a bus that has ended and comes back
// there is another one, which no library would take for the one that it was told of. Before there
// are threads.
void acceptAnyBusAtItsAddress();

// Undoes prepareProcess(), unblocks every signal and keeps what this program has open from the
// child; for a child process between fork and exec. Async-signal-safe.
void restoreForChild() noexcept;

} // namespace ostrelle
