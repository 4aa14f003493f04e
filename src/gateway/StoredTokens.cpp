#include "gateway/StoredTokens.h"

namespace ostrelle
{

StoredTokens readStoredTokens(const OstrelleConfig &config, const Tokens &tokens)
{
    constexpr qsizetype shownCharacters = 4;
    StoredTokens stored;
    for (const SavedGateway &profile : config.gateway.saved.value_or(QList<SavedGateway>())) {
        const QString token = tokens.getToken(profile.url).value_or(QString());
        stored.tails.insert(profile.url, token.right(shownCharacters));
    }
    stored.activeGatewayHasToken = !tokens.tokenFor(config.gateway.url, config).isEmpty();
    return stored;
}

} // namespace ostrelle
