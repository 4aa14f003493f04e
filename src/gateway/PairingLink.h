#pragma once

#include "gateway/GatewayNames.h"
#include "gateway/NetworkHelpers.h"
#include "settings/Tokens.h"

namespace ostrelle
{

// What a pairing link is made from.
struct PairingSubject {
    SavedGateway gateway = {};
    OstrelleConfig config = {};
    std::shared_ptr<const Tokens> tokens = {};
    bool useMagicDNS = true;
    QString geminiAPIKey = {}; // left out of the link when empty
    TailscalePlaces tailscale = {};
};

// The link ostrelle://config. Its values are escaped so that any receiver reads them back
// unchanged.
QString pairingLink(const QString &gatewayBaseURL, const QString &token,
                    const QString &geminiAPIKey);

// The address by which a phone reaches the configured gateway. May run the Tailscale tool:
// background threads only.
QString preferredGatewayBaseURL(const PairingSubject &subject);

// The link that hands the gateway to a phone, token included. Asks the secret store and may run the
// Tailscale tool: background threads only.
QString buildPairURL(const PairingSubject &subject);

} // namespace ostrelle
