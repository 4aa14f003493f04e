#include "gateway/SavedGateways.h"

#include "gateway/GatewayNames.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

std::expected<SavedGateway, AddressProblem> gatewayTyped(const QString &typed)
{
    const QString url = typed.startsWith("http"_L1, Qt::CaseInsensitive)
                            ? typed
                            : u"http://"_s + typed + u":18789"_s;
    for (const QString &address : {typed, url}) {
        if (const auto acceptable = checkGatewayAddress(address); !acceptable) {
            return std::unexpected(acceptable.error());
        }
    }
    return SavedGateway{.name = hostOf(url).value_or(url), .url = url};
}

QString gatewayNotAdded(AddressProblem problem)
{
    return u"Not added: the address "_s + toString(problem);
}

void addSaved(OstrelleConfig::Gateway &gateway, const SavedGateway &profile)
{
    QList<SavedGateway> &saved = gateway.saved ? *gateway.saved : gateway.saved.emplace();
    if (std::ranges::find(saved, profile.url, &SavedGateway::url) == saved.end()) {
        saved.append(profile);
    }
}

void removeSaved(OstrelleConfig::Gateway &gateway, const QString &url)
{
    if (gateway.saved) {
        gateway.saved->removeIf([&](const SavedGateway &saved) { return saved.url == url; });
    }
}

} // namespace ostrelle
