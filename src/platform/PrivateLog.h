#pragma once

#include "platform/Files.h"

#include <QString>

namespace ostrelle
{

// Opens a log for appending, and makes it if it is missing; an invalid descriptor when that is not
// safe. The log may stand in a directory that everybody may write to, so it counts only as a
// regular file of ours without a second name: nobody else's link or file is ever written through.
// Readable by the owner only from the first byte on.
Descriptor openPrivateLog(const QString &path);

} // namespace ostrelle
