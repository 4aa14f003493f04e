#pragma once

#include <string_view>

namespace ostrelle
{

// The gateway's cron job that tracks the projects, as the script below names it.
inline constexpr std::string_view projectTrackerJob = "OSTRELLE Project Tracker";

// Runs the script that switches on the gateway's project-tracking skill, and waits for it: the
// script that ships with the program, else the one in the gateway's workspace. Does nothing where
// there is none; failures are not reported. Background threads only.
void enableProjectTrackingSkill();

} // namespace ostrelle
