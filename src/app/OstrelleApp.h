#pragma once

#include "settings/Settings.h"
#include "state/Models.h"

#include <QObject>

#include <memory>

namespace ostrelle
{

class AgentSyncService;
class AppDelegate;
class CronSyncService;
class GatewaySettings;

// Creates every long-lived object once, in a fixed order, and owns it for the life of the process.
// Main thread only.
class OstrelleApp : public QObject
{
    Q_OBJECT

public:
    explicit OstrelleApp(AppDelegate &delegate);
    ~OstrelleApp() override;

    // What the program's face shows.
    Models models() const;

    // Gives the delegate what it acts on; at the start, and again whenever the panel appears.
    void handOverServices() const;

    // Takes a link of the program's own scheme; any other is ignored. One with an address that no
    // gateway has is refused with a log line.
    void handleIncomingURL(const QString &url);

private:
    void enableProjectTrackingOnFirstStart();

    AppDelegate &m_delegate;
    const Settings m_settings;
    const OstrelleConfig m_config; // as it was at the start
    std::unique_ptr<GatewayViewModel> m_gatewayVM;
    std::unique_ptr<GatewayInUse> m_gatewayInUse;
    std::unique_ptr<GatewaySettings> m_gatewaySettings;
    std::unique_ptr<ServiceManager> m_serviceManager;
    std::unique_ptr<VoiceViewModel> m_voiceVM;
    std::unique_ptr<StatusServer> m_statusServer;
    std::unique_ptr<SetupManager> m_setupManager;
    std::unique_ptr<CronSyncService> m_cronSync;
    std::unique_ptr<AgentSyncService> m_agentSync;
};

} // namespace ostrelle
