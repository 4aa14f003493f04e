#pragma once

#include "platform/Files.h"

#include <QString>

namespace ostrelle
{

// Opens the voice agent's log for appending; the descriptor is invalid when that is not safe.
// Everybody may write to the log's directory, so only a regular file of ours that has no second
// name is used: we never write through somebody else's link or into their file. Only the owner can
// read it, from the first byte on.
Descriptor openAgentLog(const QString &path);

} // namespace ostrelle
