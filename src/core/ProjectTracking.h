#pragma once

namespace ostrelle
{

// Runs the script that switches on the gateway's project-tracking skill, and waits for it: the
// script that ships with the program, else the one in the gateway's workspace. Does nothing where
// there is none; failures are not reported. Background threads only.
void enableProjectTrackingSkill();

} // namespace ostrelle
