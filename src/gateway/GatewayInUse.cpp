#include "gateway/GatewayInUse.h"

#include "core/NotificationManager.h"
#include "core/WhenDone.h"
#include "gateway/GatewayNames.h"

#include <algorithm>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The domain of every name that Tailscale gives a machine.
constexpr QLatin1StringView magicDNSSuffix = ".ts.net"_L1;

} // namespace

GatewayInUse::GatewayInUse(Settings settings, GatewayViewModel *monitor,
                           std::chrono::milliseconds nextMigration, QObject *parent)
    : QObject(parent)
    , m_settings(std::move(settings))
    , m_monitor(monitor)
    , m_nextMigration(nextMigration)
{
    migrateTokens([this] { handleNext(); });
}

void GatewayInUse::migrateTokens(const std::function<void()> &done)
{
    whenDone(m_settings.tokens->migrateFromConfig(), this, [this, done](bool isSomethingLeft) {
        if (isSomethingLeft) {
            QTimer::singleShot(m_nextMigration, this, [this] { migrateTokens([] {}); });
        }
        done();
    });
}

void GatewayInUse::switchTo(const QString &url, const std::function<void()> &done)
{
    enqueue({.url = url,
             .apply = [url](OstrelleConfig &config) { config.useGateway(url); },
             .done = done});
}

void GatewayInUse::adopt(const QString &url, const std::optional<QString> &token,
                         const std::function<void()> &done)
{
    enqueue({.url = url,
             .apply = [url](OstrelleConfig &config) { adoptGateway(config, url); },
             .token = token,
             .done = done});
}

void GatewayInUse::enqueue(const Request &request)
{
    m_requests.enqueue(request);
    if (!m_isBusy) {
        handleNext();
    }
}

void GatewayInUse::handleNext()
{
    m_isBusy = !m_requests.isEmpty();
    if (m_isBusy) {
        saveToken(m_requests.dequeue());
    }
}

// Under its URL before the configuration names the gateway, and as the active one only after that:
// no gateway ever gets the other one's.
void GatewayInUse::saveToken(const Request &request)
{
    if (!request.token) {
        saveConfig(request);
        return;
    }
    whenDone(m_settings.tokens->saveForUser(request.url, *request.token), this,
             [this, request](const Tokens::Saved &saved) {
                 if (!saved) {
                     NotificationManager::send(notificationTitle, tokenNotSaved(saved.error()));
                 }
                 saveConfig(request);
             });
}

void GatewayInUse::saveConfig(const Request &request)
{
    whenDone(m_settings.config->change(request.apply), this,
             [this, request](const ConfigStore::Changed &) { activateToken(request); });
}

void GatewayInUse::activateToken(const Request &request)
{
    whenDone(m_settings.tokens->activate(request.url), this, [this, request] { finish(request); });
}

void GatewayInUse::finish(const Request &request)
{
    m_monitor->setGatewayURL(request.url);
    m_monitor->pollHealth();
    request.done();
    handleNext();
}

void adoptGateway(OstrelleConfig &config, const QString &url)
{
    config.useGateway(url);
    SavedGateway profile{.name = hostOf(url).value_or(url),
                         .url = url,
                         .isMagicDNS = url.startsWith("https://"_L1, Qt::CaseInsensitive) &&
                                       url.contains(magicDNSSuffix)};
    QList<SavedGateway> &saved =
        config.gateway.saved ? *config.gateway.saved : config.gateway.saved.emplace();
    const auto known = std::ranges::find(saved, url, &SavedGateway::url);
    if (known == saved.end()) {
        saved.append(profile);
    } else {
        profile.token = known->token; // one that no store has taken yet
        *known = profile;
    }
}

} // namespace ostrelle

#include "moc_GatewayInUse.cpp"
