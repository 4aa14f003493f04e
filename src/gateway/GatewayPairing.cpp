#include "gateway/GatewayPairing.h"

#include "core/WhenDone.h"

namespace ostrelle
{

namespace
{

QrCode generateQRCode(const PairingSubject &subject)
{
    return QrCode::encode(buildPairURL(subject).toUtf8()).value_or(QrCode());
}

} // namespace

GatewayPairing::GatewayPairing(GatewayViewModel *gateway, GatewayProfiles *profiles,
                               GatewaySettings *settings, TailscalePlaces tailscale,
                               QObject *parent)
    : QObject(parent)
    , m_gateway(gateway)
    , m_profiles(profiles)
    , m_settings(settings)
    , m_tailscale(std::move(tailscale))
{
    const auto rebuilds = [this] { rebuild(); };
    connect(profiles, &GatewayProfiles::configChanged, this, rebuilds);
    connect(profiles, &GatewayProfiles::tokensChanged, this, rebuilds);
    connect(settings, &GatewaySettings::geminiAPIKeyChanged, this, rebuilds);
    connect(gateway, &GatewayViewModel::useMagicDNSChanged, this, rebuilds);
    connect(gateway, &GatewayViewModel::magicDNSURLChanged, this, rebuilds);
    connect(gateway, &GatewayViewModel::tailscaleIPChanged, this, rebuilds);
}

void GatewayPairing::setShowQR(bool show)
{
    m_showQR = show;
    if (show) {
        rebuild();
    } else {
        m_qrCode = QrCode(); // it holds the token
    }
}

PairingSubject GatewayPairing::subject() const
{
    return {.gateway = m_profiles->activeGatewaySaved(),
            .config = m_profiles->config(),
            .tokens = m_profiles->tokens(),
            .useMagicDNS = m_gateway->useMagicDNS(),
            .geminiAPIKey = m_settings->geminiAPIKey(),
            .tailscale = m_tailscale};
}

void GatewayPairing::rebuild()
{
    if (!m_showQR) {
        return;
    }
    if (const QString url = m_profiles->activeGatewaySaved().url; url != m_codeOf) {
        m_codeOf = url;
        m_qrCode = QrCode(); // nobody shall scan the one of the gateway before
    }
    m_outdated = m_isBuilding;
    if (m_isBuilding) {
        return;
    }
    m_isBuilding = true;
    whenDone(userInitiatedPool().run([subject = subject()] { return generateQRCode(subject); }),
             this, [this](const QrCode &code) { finish(code); });
}

void GatewayPairing::finish(const QrCode &code)
{
    m_isBuilding = false;
    if (m_outdated) {
        rebuild();
    } else if (m_showQR) {
        m_qrCode = code;
    }
}

} // namespace ostrelle

#include "moc_GatewayPairing.cpp"
