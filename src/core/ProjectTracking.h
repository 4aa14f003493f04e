#pragma once

namespace ostrelle
{

// Runs the script that switches the gateway's project-tracking skill on, the bundle's own or the
// one in the gateway's workspace, and waits for it. Where there is none nothing happens; no failure
// is told. Background threads only.
void enableProjectTrackingSkill();

} // namespace ostrelle
