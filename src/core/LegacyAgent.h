#pragma once

#include <QString>

namespace ostrelle
{

// A per-user launchd job of an older version, which would do this program's work a second time.
struct LegacyAgent {
    QString label;
    QString plist; // its property-list file
};

// Unloads the job and renames its file to "<plist>.disabled", unless that exists. Does nothing
// where there is no launchd; failures are not reported. Blocks: background threads only.
void disableLegacyAgent(const LegacyAgent &agent);

} // namespace ostrelle
