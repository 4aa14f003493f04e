#include "gateway/GatewayViewModel.h"

#include "core/NotificationManager.h"
#include "core/PropertyUpdateGroup.h"
#include "core/WhenDone.h"
#include "gateway/DuskrellTool.h"
#include "gateway/GatewayAddress.h"
#include "platform/Log.h"
#include "platform/PrivateLog.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto tokenDeadline = 5s;

// How many of one kind may be under way before further ones are left out. A look at a tool or at
// the secret store occupies a thread. A question to the gateway ends within a minute, so there is
// room for all that the timer starts in that time: however many questions were lost, a gateway that
// answers again is seen at once.
constexpr int looksAtOnce = 4;
constexpr int questionsAtOnce = 24;

void openLog(const GatewaySurroundings &surroundings)
{
    if (openPrivateLog(surroundings.voiceLog)) { // now it is there, and nobody else's
        surroundings.openFile(surroundings.voiceLog);
    }
}

void tellResetFailed(const QString &reason)
{
    logLine(u"[Ostrelle] Token reset: "_s + reason);
    NotificationManager::send(notificationTitle, u"Token reset failed: "_s + reason);
}

} // namespace

GatewayViewModel::GatewayViewModel(Settings settings, GatewaySurroundings surroundings,
                                   QObject *parent)
    : QObject(parent)
    , m_settings(std::move(settings))
    , m_surroundings(std::move(surroundings))
    , m_healthPasses(questionsAtOnce)
    , m_tokenPasses(looksAtOnce)
    , m_tailscalePasses(looksAtOnce)
{
    m_useMagicDNS = m_settings.preferences->value(preference::useMagicDNS);
    m_gatewayURL = m_settings.config->current().gateway.url;
    keepPreferredURL();
    pollHealth();
    connect(&m_pollTimer, &QTimer::timeout, this, &GatewayViewModel::pollHealth);
    m_pollTimer.start(m_surroundings.pollInterval);
}

// Not by a binding: while Qt 6.4 evaluates one, the table in which an object keeps who depends on
// what may grow, and the old table is read once more after it was freed.
void GatewayViewModel::keepPreferredURL()
{
    const auto derive = [this] { m_preferredURL = derivePreferredURL(); };
    for (const auto changed :
         {&GatewayViewModel::useMagicDNSChanged, &GatewayViewModel::magicDNSURLChanged,
          &GatewayViewModel::tailscaleIPChanged, &GatewayViewModel::gatewayURLChanged}) {
        connect(this, changed, this, derive);
    }
    derive();
}

void GatewayViewModel::setGatewayURL(const QString &url)
{
    if (url != gatewayURL()) {
        m_http.abort();
        m_gatewayURL = url;
    }
}

void GatewayViewModel::pollHealth()
{
    if (const auto health = endpoint(m_gatewayURL, u"/health"_s)) {
        probeHealth(*health);
        probeToken();
        probeTailscale();
    }
}

void GatewayViewModel::probeHealth(const QUrl &url)
{
    const PassLimit::Pass pass = m_healthPasses.begin();
    if (!pass) {
        return;
    }
    // A probe that ends after a later one has nothing new to tell.
    m_http.send({.url = url, .deadline = m_surroundings.healthDeadline},
                [this, pass, probe = ++m_healthProbes](const HttpResult &result) {
                    if (probe > m_answeredProbe) {
                        m_answeredProbe = probe;
                        m_gatewayOnline = result.has_value();
                    }
                });
}

void GatewayViewModel::probeToken()
{
    const PassLimit::Pass pass = m_tokenPasses.begin();
    if (!pass) {
        return;
    }
    const auto look = [pass, tokens = m_settings.tokens, url = gatewayURL()] {
        return tokens->tokenFor(url);
    };
    whenDone(utilityPool().run(look), this,
             [this, url = gatewayURL(), probe = ++m_tokenProbes](const QString &token) {
                 askWithToken(url, token, probe);
             });
}

void GatewayViewModel::askWithToken(const QString &gatewayURL, const QString &token, int probe)
{
    const auto models = endpoint(gatewayURL, u"/v1/models"_s);
    if (token.isEmpty() || gatewayURL != m_gatewayURL || !models) {
        return;
    }
    m_http.send(
        {.url = *models, .headers = {{"Authorization", bearer(token)}}, .deadline = tokenDeadline},
        [this, probe](const HttpResult &result) {
            if (probe > m_answeredTokenProbe) {
                m_answeredTokenProbe = probe;
                m_tokenRejected = result && (result->status == 401 || result->status == 403);
            }
        });
}

void GatewayViewModel::probeTailscale()
{
    const PassLimit::Pass pass = m_tailscalePasses.begin();
    if (!pass) {
        return;
    }
    const auto look = [pass, places = m_surroundings.tailscale] { return lookAtTailscale(places); };
    whenDone(utilityPool().run(look), this,
             [this](const Tailscale &tailscale) { show(tailscale); });
}

GatewayViewModel::Tailscale GatewayViewModel::lookAtTailscale(const TailscalePlaces &places)
{
    if (!NetworkHelpers::isTailscaleInstalled(places)) {
        return {}; // there is no tool to ask, so no process is spent on asking it
    }
    return {.installed = true,
            .serveURL = NetworkHelpers::getTailscaleServeURL(places),
            .ip = NetworkHelpers::getTailscaleIP(places),
            .magicDNS = NetworkHelpers::getSelfMagicDNS(places)};
}

void GatewayViewModel::show(const Tailscale &tailscale)
{
    const PropertyUpdateGroup together;
    m_tailscaleInstalled = tailscale.installed;
    m_tailscaleServeURL = tailscale.serveURL.value_or(QString());
    m_tailscaleIP = tailscale.ip.value_or(QString());
    if (tailscale.magicDNS) {
        m_settings.tokens->setMagicDNSName(*tailscale.magicDNS);
        m_magicDNSURL = u"https://"_s + *tailscale.magicDNS;
    }
    m_isSecure = tailscale.serveURL || !magicDNSURL().isEmpty();
    if (m_gatewayOnline && !m_isSecure && !m_securityWarningDismissed) {
        m_showSecurityWarning = true;
    }
}

void GatewayViewModel::enableTailscaleServe()
{
    if (m_isEnablingTailscale) {
        return;
    }
    m_isEnablingTailscale = true;
    m_enableTailscaleError = QString();
    whenDone(userInitiatedPool().run(&switchGatewayToTailscaleServe), this,
             [this](const std::expected<void, QString> &outcome) { finishEnabling(outcome); });
}

void GatewayViewModel::finishEnabling(const std::expected<void, QString> &outcome)
{
    if (outcome) {
        dismissSecurityWarning();
    } else {
        m_enableTailscaleError = outcome.error();
    }
    m_isEnablingTailscale = false;
}

void GatewayViewModel::resetGatewayToken()
{
    if (m_isResettingToken) {
        return;
    }
    m_isResettingToken = true;
    // Another gateway may come in use while the tool works, by an edit of the file too.
    m_tokenResetGateway = m_settings.config->current().gateway.url;
    const auto renew = [tokens = m_settings.tokens, config = m_settings.config,
                        url = m_tokenResetGateway] {
        const auto token = renewGatewayToken();
        if (!token) {
            tellResetFailed(token.error());
            return token.error();
        }
        config->snapshot();
        const auto saved = tokens->saveForUserAndWait(url, *token);
        if (saved) {
            return QString();
        }
        const QString problem = u"The gateway has a new token. "_s + tokenNotSaved(saved.error());
        NotificationManager::send(notificationTitle, problem);
        return problem;
    };
    whenDone(userInitiatedPool().run(renew), this,
             [this](const QString &problem) { finishReset(problem); });
}

void GatewayViewModel::finishReset(const QString &problem)
{
    m_tokenResetProblem = problem;
    m_isResettingToken = false;
    m_tokenRejected = false;
    m_answeredTokenProbe = m_tokenProbes; // those were asked with the old token
    pollHealth();
}

void GatewayViewModel::dismissSecurityWarning()
{
    m_securityWarningDismissed = true;
    m_showSecurityWarning = false;
}

void GatewayViewModel::openDebugLog()
{
    userInitiatedPool().start([surroundings = m_surroundings] { openLog(surroundings); });
}

void GatewayViewModel::setUseMagicDNS(bool use)
{
    m_useMagicDNS = use;
    m_settings.preferences->set(preference::useMagicDNS, use);
}

QString GatewayViewModel::derivePreferredURL() const
{
    if (m_useMagicDNS && !magicDNSURL().isEmpty()) {
        return m_magicDNSURL;
    }
    if (!tailscaleIP().isEmpty()) {
        return u"http://"_s + tailscaleIP() + u":18789"_s;
    }
    return withoutPassword(m_gatewayURL);
}

} // namespace ostrelle

#include "moc_GatewayViewModel.cpp"
