#pragma once

#include "settings/OstrelleConfig.h"

namespace ostrelle
{

// The host as the URL spells it; absent when it cannot be parsed or has none.
std::optional<QString> hostOf(const QString &url);

// The names under which users see gateways: this machine's is called by its MagicDNS name once that
// is known, others by their profile or host. A plain value.
class GatewayNames
{
public:
    // The MagicDNS URL of this machine is empty while it is not known.
    GatewayNames(const OstrelleConfig::Gateway &gateway, QString magicDNSURL);

    bool isLocalGateway() const;
    QString activeGatewayName() const;
    QString activeGatewayURL() const;

    // The saved profile of the gateway in use, or one made up for it.
    SavedGateway activeGatewaySaved() const;

    QString profileDisplayName(const SavedGateway &profile) const;
    QString profileDisplayURL(const SavedGateway &profile) const;

private:
    bool knowsMagicDNS() const { return !m_magicDNSURL.isEmpty(); }
    QString magicDNSLabel() const;
    const SavedGateway *savedProfile() const;

    const QString m_url;
    const QList<SavedGateway> m_saved;
    const QString m_magicDNSURL;
};

} // namespace ostrelle
