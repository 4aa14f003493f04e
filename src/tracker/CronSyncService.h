#pragma once

#include "settings/OstrelleConfig.h"
#include "tracker/GatewayTool.h"
#include "tracker/SyncService.h"

namespace ostrelle
{

// Keeps the cron tracker file up to date from the gateway tool's list of scheduled jobs. An answer
// that is no job list is stored as it stands, and the cron dashboard then says that it cannot be
// read; no answer at all leaves the file as it is.
class CronSyncService final : public SyncService
{
    Q_OBJECT

public:
    explicit CronSyncService(const OstrelleConfig &config, const GatewayTool &tool = GatewayTool(),
                             QObject *parent = nullptr);
};

} // namespace ostrelle
