#pragma once

#include "settings/OstrelleConfig.h"

#include <QHash>

namespace ostrelle
{

// What the settings show of the stored tokens; never a whole token.
struct StoredTokens {
    QHash<QString, QString> tails; // by gateway URL: the last four characters, empty without one
    bool activeGatewayHasToken = false;
};

// Asks the secret store: background threads only, like all of these.
StoredTokens readStoredTokens(const OstrelleConfig &config);

// Makes the token that is stored for the gateway, if there is one, the active one.
void activateStoredToken(const QString &gatewayURL);

} // namespace ostrelle
