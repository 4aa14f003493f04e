#pragma once

#include "control/ControlServer.h"
#include "control/FileFacts.h"

#include <QJsonObject>

namespace ostrelle
{

// What the pearl, the lights and the lock say, in words; without the program, what the files do.
// docs/control.md names the members. Main thread only.
QJsonObject reportStatus(const ControlContext &context, const FileFacts &facts);

} // namespace ostrelle
