#include "gateway/GatewayNames.h"

#include "gateway/GatewayAddress.h"
#include "settings/OwnMachine.h"

#include <QUrl>

#include <algorithm>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString firstLabel(const QString &host)
{
    return host.section(u'.', 0, 0);
}

// What the user or an older version has called it, which may be its address.
QString nameOf(const SavedGateway &profile)
{
    const bool isAddress = profile.name == profile.url || profile.name.contains("://"_L1);
    return isAddress ? withoutPassword(profile.name) : profile.name;
}

} // namespace

std::optional<QString> hostOf(const QString &url)
{
    const QString host = QUrl(url, QUrl::StrictMode).host();
    if (host.isEmpty()) {
        return std::nullopt;
    }
    // QUrl gives it in lower case, but a name is shown as it was typed.
    const qsizetype typed = url.indexOf(host, url.indexOf("//"_L1), Qt::CaseInsensitive);
    return typed < 0 ? host : url.sliced(typed, host.size());
}

GatewayNames::GatewayNames(const OstrelleConfig::Gateway &gateway, QString magicDNSURL)
    : m_url(gateway.url)
    , m_saved(gateway.saved.value_or(QList<SavedGateway>()))
    , m_magicDNSURL(std::move(magicDNSURL))
{
}

bool GatewayNames::isLocalGateway() const
{
    return isLocalUrl(m_url) || (knowsMagicDNS() && m_url.startsWith(m_magicDNSURL));
}

QString GatewayNames::activeGatewayName() const
{
    if (isLocalGateway() && knowsMagicDNS()) {
        return magicDNSLabel();
    }
    if (const SavedGateway *saved = savedProfile()) {
        return nameOf(*saved);
    }
    return firstLabel(hostOf(m_url).value_or(u"Gateway"_s));
}

QString GatewayNames::activeGatewayURL() const
{
    return isLocalGateway() && knowsMagicDNS() ? m_magicDNSURL : withoutPassword(m_url);
}

SavedGateway GatewayNames::activeGatewaySaved() const
{
    const SavedGateway *saved = savedProfile();
    return saved != nullptr ? *saved : SavedGateway{.name = activeGatewayName(), .url = m_url};
}

QString GatewayNames::profileDisplayName(const SavedGateway &profile) const
{
    if (isLocalUrl(profile.url) && knowsMagicDNS()) {
        return magicDNSLabel();
    }
    return profile.isMagicDNS.value_or(false)
               ? firstLabel(hostOf(profile.url).value_or(nameOf(profile)))
               : nameOf(profile);
}

QString GatewayNames::profileDisplayURL(const SavedGateway &profile) const
{
    const bool shownAsItIs = profile.isMagicDNS.value_or(false) || !isLocalUrl(profile.url);
    return shownAsItIs || !knowsMagicDNS() ? withoutPassword(profile.url) : m_magicDNSURL;
}

QString GatewayNames::magicDNSLabel() const
{
    return firstLabel(hostOf(m_magicDNSURL).value_or(m_magicDNSURL));
}

const SavedGateway *GatewayNames::savedProfile() const
{
    const auto saved = std::ranges::find(m_saved, m_url, &SavedGateway::url);
    return saved == m_saved.end() ? nullptr : &*saved;
}

} // namespace ostrelle
