#include "app/ConfigurationLink.h"

#include "gateway/GatewayNames.h"

#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The domain of every name that Tailscale gives a machine.
constexpr QLatin1StringView magicDNSSuffix = ".ts.net"_L1;

std::optional<QString> valueIn(const QUrlQuery &query, const QString &key)
{
    const QString value = query.queryItemValue(key, QUrl::FullyDecoded);
    return value.isEmpty() ? std::nullopt : std::optional(value);
}

} // namespace

std::optional<ConfigurationLink> ConfigurationLink::parse(const QString &url)
{
    const QUrl parsed(url);
    if (parsed.scheme() != "ostrelle"_L1 || parsed.host() != "config"_L1) {
        return std::nullopt;
    }
    const QUrlQuery query(parsed);
    const ConfigurationLink link{.gatewayBaseURL = valueIn(query, u"gatewayBaseURL"_s),
                                 .token = valueIn(query, u"token"_s)};
    return link == ConfigurationLink{} ? std::nullopt : std::optional(link);
}

void adoptGateway(OstrelleConfig &config, const QString &base)
{
    const SavedGateway profile{.name = hostOf(base).value_or(base),
                               .url = base,
                               .isMagicDNS =
                                   base.startsWith("https://"_L1) && base.contains(magicDNSSuffix)};
    auto saved = config.gateway.saved.value_or(QList<SavedGateway>());
    const auto known = std::ranges::find(saved, base, &SavedGateway::url);
    if (known != saved.end()) {
        *known = profile;
    } else {
        saved.append(profile);
    }
    config.gateway.saved = saved;
    config.gateway.url = base;
}

} // namespace ostrelle
