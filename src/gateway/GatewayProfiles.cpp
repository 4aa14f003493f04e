#include "gateway/GatewayProfiles.h"

#include "settings/KeychainHelper.h"
#include "core/WhenDone.h"
#include "settings/SettingsQueue.h"

#include <QtConcurrent>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// What is known without looking at the disk.
OstrelleConfig configOf(const GatewayViewModel &gateway)
{
    OstrelleConfig config = OstrelleConfig::defaults();
    config.gateway.url = gateway.gatewayURL();
    return config;
}

// What was read last is the best there is when the file has become unreadable.
OstrelleConfig rewriteConfig(const std::function<void(OstrelleConfig::Gateway &)> &apply,
                             const OstrelleConfig &readLast)
{
    const auto before = OstrelleConfig::read().value_or(readLast.withoutTokens());
    OstrelleConfig config = before;
    apply(config.gateway);
    if (config != before) {
        config.save();
    }
    return config;
}

} // namespace

GatewayProfiles::GatewayProfiles(GatewayViewModel *gateway, QObject *parent)
    : QObject(parent)
    , m_gateway(gateway)
    , m_config(configOf(*gateway))
{
    connect(gateway, &GatewayViewModel::magicDNSURLChanged, this, &GatewayProfiles::showNames);
    // Queued: whoever changes the gateway in use may save the configuration just after that.
    connect(gateway, &GatewayViewModel::gatewayURLChanged, this, &GatewayProfiles::reload,
            Qt::QueuedConnection);
    connect(gateway, &GatewayViewModel::isResettingTokenChanged, this, [this] {
        if (!m_gateway->isResettingToken()) {
            Q_EMIT tokensChanged();
        }
    });
    connect(this, &GatewayProfiles::tokensChanged, this, &GatewayProfiles::readTokens);
    showNames();
    reload();
}

void GatewayProfiles::reload()
{
    const auto read = [readLast = m_config] { return OstrelleConfig::read().value_or(readLast); };
    whenDone(QtConcurrent::run(&settingsQueue(), read), this, [this](const OstrelleConfig &config) {
        adopt(config);
        readTokens();
    });
}

void GatewayProfiles::requestSwitch(const QString &url)
{
    m_pendingSwitchGateway = url;
}

void GatewayProfiles::cancelSwitch()
{
    m_pendingSwitchGateway = QString();
}

void GatewayProfiles::confirmSwitch()
{
    const auto saved = m_config.gateway.saved.value_or(QList<SavedGateway>());
    const auto pending = std::ranges::find(saved, pendingSwitchGateway(), &SavedGateway::url);
    if (pending != saved.end()) {
        switchGateway(*pending);
    }
    cancelSwitch();
}

void GatewayProfiles::switchGateway(const SavedGateway &profile)
{
    const QString url = profile.url;
    const auto activate = [this, url] {
        whenDone(m_tokenWrites.run([url] { activateStoredToken(url); }), this,
                 [this, url] { finishSwitch(url); });
    };
    change([url](OstrelleConfig::Gateway &gateway) { gateway.url = url; }, activate);
}

void GatewayProfiles::finishSwitch(const QString &url)
{
    if (url != m_config.gateway.url) {
        return; // the user has switched on meanwhile
    }
    m_gateway->setGatewayURL(url);
    m_gateway->pollHealth();
    reload();
}

void GatewayProfiles::addGateway(const SavedGateway &profile)
{
    change([profile](OstrelleConfig::Gateway &gateway) {
        QList<SavedGateway> &saved = gateway.saved ? *gateway.saved : gateway.saved.emplace();
        if (std::ranges::find(saved, profile.url, &SavedGateway::url) == saved.end()) {
            saved.append(profile);
        }
    });
}

void GatewayProfiles::addManualGateway()
{
    const QString typed = manualURL();
    if (typed.isEmpty()) {
        return;
    }
    const QString url = typed.startsWith("http"_L1) ? typed : u"http://"_s + typed + u":18789"_s;
    addGateway({.name = hostOf(url).value_or(url), .url = url});
    m_manualURL = QString();
}

void GatewayProfiles::removeGateway(const QString &url)
{
    change([url](OstrelleConfig::Gateway &gateway) {
        if (gateway.saved) {
            gateway.saved->removeIf([&](const SavedGateway &saved) { return saved.url == url; });
        }
    });
}

void GatewayProfiles::saveActiveToken()
{
    storeToken(tokenInput(), {m_config.gateway.url, KeychainHelper::activeKey});
    setShowTokenField(false);
}

void GatewayProfiles::saveProfileToken()
{
    QStringList keys{editingProfileId()};
    if (editingProfileId() == m_config.gateway.url) {
        keys.append(KeychainHelper::activeKey);
    }
    storeToken(profileTokenInput(), keys);
    setEditingProfileId({});
}

void GatewayProfiles::setShowTokenField(bool show)
{
    m_showTokenField = show;
    m_tokenInput = QString();
}

void GatewayProfiles::setEditingProfileId(const QString &url)
{
    m_editingProfileId = url;
    m_profileTokenInput = QString(); // what was typed for one is not for another
}

void GatewayProfiles::change(const std::function<void(OstrelleConfig::Gateway &)> &apply,
                             const std::function<void()> &done)
{
    whenDone(QtConcurrent::run(&settingsQueue(), &rewriteConfig, apply, m_config), this,
             [this, done](const OstrelleConfig &config) {
                 adopt(config);
                 done();
             });
}

void GatewayProfiles::adopt(const OstrelleConfig &config)
{
    if (m_config != config) {
        m_config = config;
        Q_EMIT configChanged();
        readTokens();
    }
    showNames();
}

void GatewayProfiles::showNames()
{
    m_activeGatewayName = names().activeGatewayName();
    m_activeGatewayURL = names().activeGatewayURL();
    m_isLocalGateway = names().isLocalGateway();
    m_saved.show(m_config.gateway, m_gateway->magicDNSURL(), m_tokenTails);
}

void GatewayProfiles::storeToken(const QString &token, const QStringList &keys)
{
    const auto store = [token, keys] {
        for (const QString &key : keys) {
            KeychainHelper::saveToken(token, key);
        }
    };
    whenDone(m_tokenWrites.run(store), this, [this] { Q_EMIT tokensChanged(); });
}

void GatewayProfiles::readTokens()
{
    m_tokensOutdated = m_isReadingTokens;
    if (m_isReadingTokens) {
        return;
    }
    m_isReadingTokens = true;
    whenDone(QtConcurrent::run(&userInitiatedPool(), &readStoredTokens, m_config), this,
             [this](const StoredTokens &tokens) { finishReading(tokens); });
}

void GatewayProfiles::finishReading(const StoredTokens &tokens)
{
    m_isReadingTokens = false;
    if (m_tokensOutdated) {
        readTokens();
    } else {
        showTokens(tokens);
    }
}

void GatewayProfiles::showTokens(const StoredTokens &tokens)
{
    m_tokenTails = tokens.tails;
    m_lacksToken = !tokens.activeGatewayHasToken;
    showNames();
}

} // namespace ostrelle

#include "moc_GatewayProfiles.cpp"
