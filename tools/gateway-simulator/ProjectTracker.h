#pragma once

#include "GatewayFiles.h"
#include "World.h"

namespace ostrelle::simulator
{

// Writes the state of the projects to Ostrelle's project tracker file.
Done writeProjectTracker(const World &world);

// The same, unless the file already holds a project or something that is not a tracker.
Done fillEmptyProjectTracker(const World &world);

} // namespace ostrelle::simulator
