#pragma once

#include "platform/ChildProcess.h"

namespace ostrelle
{

// Whether this program may gain no privileges, as our user unit has it: then nothing that it starts
// may either, and sudo does not work.
bool isConfined();

// The same command as a unit of its own of the user's systemd, which confines it no more. It reads
// and prints what this program's child would. Its environment stands on a command line and in the
// unit: no secret belongs there. The tool that starts units is found by the search path.
ChildCommand asUnitOfItsOwn(const ChildCommand &command, const QString &searchPath);

} // namespace ostrelle
