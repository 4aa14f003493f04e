#include "gateway/GatewayProfiles.h"

#include "core/NotificationManager.h"
#include "core/WhenDone.h"
#include "gateway/SavedGateways.h"
#include "platform/Log.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Where the field that it is about is no longer there.
void tellElsewhere(const QString &problem)
{
    if (!problem.isEmpty()) {
        NotificationManager::send(notificationTitle, problem);
    }
}

} // namespace

GatewayProfiles::GatewayProfiles(Settings settings, GatewayViewModel *gateway, GatewayInUse *inUse,
                                 QObject *parent)
    : QObject(parent)
    , m_settings(std::move(settings))
    , m_gateway(gateway)
    , m_inUse(inUse)
    , m_config(m_settings.config->current())
{
    connect(m_settings.config.get(), &ConfigStore::changed, this, &GatewayProfiles::followConfig);
    connect(gateway, &GatewayViewModel::magicDNSURLChanged, this, &GatewayProfiles::showNames);
    // The last that a switch does: the active token is another one by now.
    connect(gateway, &GatewayViewModel::gatewayURLChanged, this, &GatewayProfiles::readTokens);
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
    const auto look = [config = m_settings.config] { config->snapshot(); };
    whenDone(userInitiatedPool().run(look), this, [this, before = m_config] {
        m_isRead = true;
        if (m_config == before) { // else they are being read already
            readTokens();
        }
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
    m_inUse->switchTo(profile.url);
}

void GatewayProfiles::addGateway(const SavedGateway &profile)
{
    if (const auto acceptable = checkGatewayAddress(profile.url); !acceptable) {
        logLine(u"[Ostrelle] Gateway \""_s + printableHost(profile.url) +
                u"\" not added: its address "_s + toString(acceptable.error()));
        return;
    }
    change([profile](OstrelleConfig::Gateway &gateway) { addSaved(gateway, profile); });
}

void GatewayProfiles::addManualGateway()
{
    const QString typed = manualURL();
    if (typed.isEmpty()) {
        return;
    }
    const auto profile = gatewayTyped(typed);
    if (!profile) {
        m_manualProblem = gatewayNotAdded(profile.error());
        return;
    }
    addGateway(*profile);
    setManualURL({});
}

void GatewayProfiles::setManualURL(const QString &url)
{
    m_manualURL = url;
    m_manualProblem = QString();
}

void GatewayProfiles::removeGateway(const QString &url)
{
    change([url](OstrelleConfig::Gateway &gateway) { removeSaved(gateway, url); });
}

void GatewayProfiles::saveActiveToken()
{
    const QString token = tokenInput();
    storeToken(m_config.gateway.url, token,
               [this, token](const QString &problem) { showActiveTokenSaved(token, problem); });
}

void GatewayProfiles::saveProfileToken()
{
    const QString url = editingProfileId();
    const QString token = profileTokenInput();
    storeToken(url, token, [this, url, token](const QString &problem) {
        showProfileTokenSaved(url, token, problem);
    });
}

void GatewayProfiles::setShowTokenField(bool show)
{
    m_showTokenField = show;
    setTokenInput({});
}

void GatewayProfiles::setTokenInput(const QString &token)
{
    m_tokenInput = token;
    m_tokenProblem = QString();
}

void GatewayProfiles::setEditingProfileId(const QString &url)
{
    // A view that is made anew may ask for one that has gone meanwhile.
    const auto saved = m_config.gateway.saved.value_or(QList<SavedGateway>());
    m_editingProfileId =
        std::ranges::find(saved, url, &SavedGateway::url) != saved.end() ? url : QString();
    setProfileTokenInput({}); // what was typed for one is not for another
}

void GatewayProfiles::setProfileTokenInput(const QString &token)
{
    m_profileTokenInput = token;
    m_profileTokenProblem = QString();
}

void GatewayProfiles::change(const std::function<void(OstrelleConfig::Gateway &)> &apply)
{
    m_settings.config->change([apply](OstrelleConfig &config) { apply(config.gateway); });
}

void GatewayProfiles::followConfig()
{
    const QString before = std::exchange(m_config, m_settings.config->current()).gateway.url;
    if (before != m_config.gateway.url) {
        setShowTokenField(false); // what was pasted for the one is not for the other
    }
    showNames();
    readTokens();
    Q_EMIT configChanged();
}

void GatewayProfiles::showNames()
{
    m_activeGatewayName = names().activeGatewayName();
    m_activeGatewayURL = names().activeGatewayURL();
    m_isLocalGateway = names().isLocalGateway();
    m_saved.show(m_config.gateway, m_gateway->magicDNSURL(), m_tokenTails);
}

void GatewayProfiles::storeToken(const QString &gatewayURL, const QString &token,
                                 const std::function<void(const QString &problem)> &show)
{
    whenDone(m_settings.tokens->saveForUser(gatewayURL, token), this,
             [this, show](const Tokens::Saved &saved) {
                 show(saved ? QString() : tokenNotSaved(saved.error()));
                 Q_EMIT tokensChanged();
             });
}

// What the user has typed since, or wherever else the editor is by now, stays.
void GatewayProfiles::showActiveTokenSaved(const QString &token, const QString &problem)
{
    if (!showTokenField() || tokenInput() != token) {
        tellElsewhere(problem);
    } else if (problem.isEmpty()) {
        setShowTokenField(false);
    } else {
        m_tokenProblem = problem;
    }
}

void GatewayProfiles::showProfileTokenSaved(const QString &url, const QString &token,
                                            const QString &problem)
{
    if (editingProfileId() != url || profileTokenInput() != token) {
        tellElsewhere(problem);
    } else if (problem.isEmpty()) {
        setEditingProfileId({});
    } else {
        m_profileTokenProblem = problem;
    }
}

void GatewayProfiles::readTokens()
{
    m_tokensOutdated = m_isReadingTokens;
    if (m_isReadingTokens) {
        return;
    }
    m_isReadingTokens = true;
    const auto look = [config = m_config, tokens = m_settings.tokens] {
        return readStoredTokens(config, *tokens);
    };
    whenDone(userInitiatedPool().run(look), this,
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
