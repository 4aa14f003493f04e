#pragma once

#include "settings/OstrelleConfig.h"
#include "tracker/GatewayTool.h"
#include "tracker/SyncService.h"

namespace ostrelle
{

// Keeps the agent status file up to date from the gateway tool's list of active sessions. Without
// the tool, or without an answer that can be understood, the file stays as it is. A tracker file
// that has gone, whichever of the three, is created again.
class AgentSyncService final : public SyncService
{
    Q_OBJECT

public:
    explicit AgentSyncService(const OstrelleConfig &config, const GatewayTool &tool = GatewayTool(),
                              QObject *parent = nullptr);
};

} // namespace ostrelle
