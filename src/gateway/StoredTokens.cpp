#include "gateway/StoredTokens.h"

#include "settings/KeychainHelper.h"

namespace ostrelle
{

StoredTokens readStoredTokens(const OstrelleConfig &config)
{
    constexpr qsizetype shownCharacters = 4;
    StoredTokens stored;
    for (const SavedGateway &profile : config.gateway.saved.value_or(QList<SavedGateway>())) {
        const QString token = KeychainHelper::getToken(profile.url).value_or(QString());
        stored.tails.insert(profile.url, token.right(shownCharacters));
    }
    stored.activeGatewayHasToken = !config.resolveToken().isEmpty();
    return stored;
}

void activateStoredToken(const QString &gatewayURL)
{
    const auto token = KeychainHelper::getToken(gatewayURL);
    if (token && !token->isEmpty()) {
        KeychainHelper::saveToken(*token, KeychainHelper::activeKey);
    }
}

} // namespace ostrelle
