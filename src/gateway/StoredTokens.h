#pragma once

#include "settings/Tokens.h"

#include <QHash>

namespace ostrelle
{

// What the settings show of the stored tokens; never a whole token.
struct StoredTokens {
    QHash<QString, QString> tails; // by gateway URL: the last four characters, empty without one
    bool activeGatewayHasToken = false; // one that it is sent
};

// Asks the secret store: background threads only.
StoredTokens readStoredTokens(const OstrelleConfig &config, const Tokens &tokens);

} // namespace ostrelle
