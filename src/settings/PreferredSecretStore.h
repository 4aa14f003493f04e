#pragma once

#include "platform/SecretStore.h"

namespace ostrelle
{

// The process's store: the desktop's Secret Service while one can be reached, else a file that only
// the user can read. One log line says which, and one more whenever that changes.
SecretStore &secretStore();

} // namespace ostrelle
