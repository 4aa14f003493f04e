#include "app/OstrelleApp.h"

#include "app/AppDelegate.h"
#include "app/ConfigurationLink.h"
#include "core/BackgroundWork.h"
#include "core/NotificationManager.h"
#include "core/ProjectTracking.h"
#include "core/WhenDone.h"
#include "gateway/GatewayAddress.h"
#include "gateway/GatewayInUse.h"
#include "gateway/GatewaySettings.h"
#include "platform/Log.h"
#include "platform/LoginItem.h"
#include "settings/SettingsQueues.h"
#include "setup/SetupManager.h"
#include "statusserver/StatusServer.h"
#include "tracker/AgentSyncService.h"
#include "tracker/CronSyncService.h"
#include "voice/VoiceViewModel.h"

#include <cstdlib>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

void tellGatewayIsConfigured()
{
    NotificationManager::send(notificationTitle, u"Gateway configured via QR code"_s);
}

void killVoiceAgent()
{
    ServiceManager::killFromPidFile();
    ServiceManager::killRemaining();
}

} // namespace

OstrelleApp::OstrelleApp(AppDelegate &delegate)
    : m_delegate(delegate)
    , m_config(m_settings.config->current())
    , m_gatewayVM(std::make_unique<GatewayViewModel>(m_settings))
    , m_serviceManager(std::make_unique<ServiceManager>(m_config, m_settings.preferences))
    , m_voiceVM(std::make_unique<VoiceViewModel>(m_serviceManager.get(), m_config.ports.voiceAgent))
    , m_statusServer(std::make_unique<StatusServer>(m_config, m_settings.tokens))
    , m_setupManager(std::make_unique<SetupManager>(m_settings))
{
    m_setupManager->checkFirstLaunch();
    m_gatewayInUse = std::make_unique<GatewayInUse>(m_settings, m_gatewayVM.get());
    m_gatewaySettings = std::make_unique<GatewaySettings>(m_settings.preferences);
    m_serviceManager->startAll();
    m_statusServer->start();
    enableProjectTrackingOnFirstStart();

    m_cronSync = std::make_unique<CronSyncService>(m_config);
    m_cronSync->start();
    m_agentSync = std::make_unique<AgentSyncService>(m_config);
    m_agentSync->start();
    settingsQueue().run([] { LoginItem().bringUpToDate(); });
    handOverServices();
    // However the program ends: main leaves by the quick way, libraries by the other.
    std::atexit(&killVoiceAgent);
    std::at_quick_exit(&killVoiceAgent);
}

OstrelleApp::~OstrelleApp() = default;

Models OstrelleApp::models() const
{
    return {.settings = m_settings,
            .gatewayVM = m_gatewayVM.get(),
            .gatewayInUse = m_gatewayInUse.get(),
            .gatewaySettings = m_gatewaySettings.get(),
            .voiceVM = m_voiceVM.get(),
            .serviceManager = m_serviceManager.get(),
            .setupManager = m_setupManager.get(),
            .statusServer = m_statusServer.get()};
}

void OstrelleApp::handOverServices() const
{
    m_delegate.setServices({.serviceManager = m_serviceManager.get(),
                            .voiceVM = m_voiceVM.get(),
                            .statusServer = m_statusServer.get()});
}

void OstrelleApp::enableProjectTrackingOnFirstStart()
{
    Preferences &preferences = *m_settings.preferences;
    if (preferences.opens() && preferences.contains(preference::projectTrackingEnabled.key)) {
        return;
    }
    if (preferences.opens()) {
        preferences.set(preference::projectTrackingEnabled, true);
    }
    utilityPool().start(&enableProjectTrackingSkill);
}

void OstrelleApp::handleIncomingURL(const QString &url)
{
    const auto link = ConfigurationLink::parse(url);
    if (!link) {
        return;
    }
    if (link->gatewayBaseURL) {
        const auto acceptable = checkGatewayAddress(*link->gatewayBaseURL);
        if (!acceptable) {
            logLine(u"[Ostrelle] Link for \""_s + printableHost(*link->gatewayBaseURL) +
                    u"\" refused: its address "_s + toString(acceptable.error()));
            return;
        }
        m_gatewayInUse->adopt(*link->gatewayBaseURL, link->token, &tellGatewayIsConfigured);
        return;
    }
    // Whose token it is the link does not say, and a good one must not be replaced by it.
    const auto saved =
        m_settings.config->change([](const OstrelleConfig &) {}, ConfigStore::Write::Always);
    whenDone(saved, this, [](const ConfigStore::Changed &) { tellGatewayIsConfigured(); });
}

} // namespace ostrelle

#include "moc_OstrelleApp.cpp"
