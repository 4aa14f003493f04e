#include "app/OstrelleApp.h"

#include "app/AppDelegate.h"
#include "core/BackgroundWork.h"
#include "settings/KeychainHelper.h"
#include "core/NotificationManager.h"
#include "core/ProjectTracking.h"
#include "core/WhenDone.h"
#include "gateway/GatewayViewModel.h"
#include "settings/Preferences.h"
#include "settings/SettingsQueue.h"
#include "setup/SetupManager.h"
#include "statusserver/StatusServer.h"
#include "tracker/AgentSyncService.h"
#include "tracker/CronSyncService.h"
#include "voice/VoiceViewModel.h"

#include <QtConcurrent>

#include <cstdlib>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString projectTrackingKey = u"projectTrackingEnabled"_s;

// A link without an address means the gateway in use.
QString gatewayOf(const ConfigurationLink &link)
{
    return link.gatewayBaseURL ? *link.gatewayBaseURL : OstrelleConfig::load().gateway.url;
}

void storeToken(const ConfigurationLink &link, const QString &gateway)
{
    if (link.token) {
        KeychainHelper::saveToken(*link.token, gateway);
        KeychainHelper::saveToken(*link.token, KeychainHelper::activeKey);
    }
}

// What the configuration file then holds, or what was read last, with the link's gateway in use.
void saveGateway(const ConfigurationLink &link, const OstrelleConfig &readLast)
{
    OstrelleConfig config = OstrelleConfig::read().value_or(readLast);
    if (link.gatewayBaseURL) {
        adoptGateway(config, *link.gatewayBaseURL);
    }
    config.save();
}

void killVoiceAgent()
{
    ServiceManager::killFromPidFile();
    ServiceManager::killRemaining();
}

} // namespace

OstrelleApp::OstrelleApp(AppDelegate &delegate)
    : m_delegate(delegate)
    , m_config(OstrelleConfig::load())
    , m_gatewayVM(std::make_unique<GatewayViewModel>())
    , m_serviceManager(std::make_unique<ServiceManager>(m_config))
    , m_voiceVM(std::make_unique<VoiceViewModel>(m_serviceManager.get()))
    , m_statusServer(std::make_unique<StatusServer>(m_config))
    , m_setupManager(std::make_unique<SetupManager>(m_config))
{
    m_setupManager->checkFirstLaunch();
    KeychainHelper::migrateFromConfig(m_config, this, [this] { handleNextLink(); });
    OstrelleConfig::ensureTrackerFiles(m_config);
    m_serviceManager->startAll();
    m_statusServer->start();
    enableProjectTrackingOnFirstStart();

    m_cronSync = std::make_unique<CronSyncService>(m_config);
    m_cronSync->start();
    m_agentSync = std::make_unique<AgentSyncService>(m_config);
    m_agentSync->start();
    handOverServices();
    // However the program ends: main leaves by the quick way, libraries by the other.
    std::atexit(&killVoiceAgent);
    std::at_quick_exit(&killVoiceAgent);
}

OstrelleApp::~OstrelleApp() = default;

Models OstrelleApp::models() const
{
    return {.gatewayVM = m_gatewayVM.get(),
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
    Preferences preferences;
    if (preferences.opens() && preferences.contains(projectTrackingKey)) {
        return;
    }
    if (preferences.opens()) {
        preferences.set(projectTrackingKey, true);
    }
    utilityPool().start(&enableProjectTrackingSkill);
}

void OstrelleApp::handleIncomingURL(const QString &url)
{
    const auto link = ConfigurationLink::parse(url);
    if (!link) {
        return;
    }
    m_links.enqueue(*link);
    if (!m_handlesLink) {
        handleNextLink();
    }
}

void OstrelleApp::handleNextLink()
{
    m_handlesLink = !m_links.isEmpty();
    if (!m_handlesLink) {
        return;
    }
    const ConfigurationLink link = m_links.dequeue();
    const auto store = [link](const QString &gateway) { storeToken(link, gateway); };
    const auto save = [link, readLast = m_config.withoutTokens()] { saveGateway(link, readLast); };
    auto stored = QtConcurrent::run(&settingsQueue(), &gatewayOf, link)
                      .then(&userInitiatedPool(), store)
                      .then(&settingsQueue(), save);
    whenDone(stored, this, [this, link] {
        adopt(link);
        handleNextLink();
    });
}

void OstrelleApp::adopt(const ConfigurationLink &link)
{
    if (link.gatewayBaseURL) {
        m_gatewayVM->setGatewayURL(*link.gatewayBaseURL);
        m_gatewayVM->pollHealth();
    }
    NotificationManager::send(u"OSTRELLE"_s, u"Gateway configured via QR code"_s);
}

} // namespace ostrelle

#include "moc_OstrelleApp.cpp"
