#include "app/ConfigurationLink.h"

#include "gateway/GatewayNames.h"

#include <QUrl>
#include <QUrlQuery>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

std::optional<QString> valueIn(const QUrlQuery &query, const QString &key)
{
    // QUrl's own decoding takes Unicode's noncharacters, which a token may hold, for broken text.
    const QString value =
        QUrl::fromPercentEncoding(query.queryItemValue(key, QUrl::FullyEncoded).toLatin1());
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

} // namespace ostrelle
