#pragma once

#include "platform/Files.h"

#include <QString>

namespace ostrelle
{

// Opens the voice agent's log for appending; an invalid descriptor when that is not safe. The log
// stands in a directory that everybody may write to, so it counts only as a regular file of ours
// without a second name: nobody else's link or file is ever written through. Readable by the owner
// only from the first byte on.
Descriptor openAgentLog(const QString &path);

} // namespace ostrelle
