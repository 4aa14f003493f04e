#include "gateway/PairingLink.h"

#include "settings/OwnMachine.h"

#include <QUrl>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int defaultGatewayPort = 18789;

// Everything but unreserved characters is escaped: some receivers split at "&", "=" or "+".
QString escaped(const QString &value)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(value));
}

QString withLocalHostReplaced(QString url, const QString &address)
{
    return url.replace("127.0.0.1"_L1, address).replace("localhost"_L1, address);
}

} // namespace

QString pairingLink(const QString &gatewayBaseURL, const QString &token,
                    const QString &geminiAPIKey)
{
    QString link = u"ostrelle://config?gatewayBaseURL="_s + escaped(gatewayBaseURL) + u"&token="_s +
                   escaped(token);
    if (!geminiAPIKey.isEmpty()) {
        link += u"&geminiAPIKey="_s + escaped(geminiAPIKey);
    }
    return link;
}

QString preferredGatewayBaseURL(const PairingSubject &subject)
{
    QString configured = subject.config.gateway.url;
    if (subject.useMagicDNS) {
        if (const auto name = NetworkHelpers::getSelfMagicDNS(subject.tailscale)) {
            return u"https://"_s + *name;
        }
    }
    if (const auto address = NetworkHelpers::getTailscaleIP(subject.tailscale)) {
        const int port = QUrl(configured, QUrl::StrictMode).port(defaultGatewayPort);
        return u"http://"_s + *address + u':' + QString::number(port);
    }
    if (!isLocalUrl(configured)) {
        return configured;
    }
    const auto address = NetworkHelpers::getLocalIP();
    return address ? withLocalHostReplaced(configured, *address) : configured;
}

QString buildPairURL(const PairingSubject &subject)
{
    const SavedGateway &gateway = subject.gateway;
    const auto stored = subject.tokens->getToken(gateway.url);
    const QString token = stored ? *stored : subject.config.resolveToken(*subject.tokens);
    const bool needsAddress = !gateway.isMagicDNS.value_or(false) && isLocalUrl(gateway.url);
    return pairingLink(needsAddress ? preferredGatewayBaseURL(subject) : gateway.url, token,
                       subject.geminiAPIKey);
}

} // namespace ostrelle
