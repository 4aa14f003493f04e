#include "settings/OwnMachine.h"

#include <QHostAddress>
#include <QNetworkInterface>
#include <QUrl>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Whichever interface it was reached through, which is no part of the comparison.
bool isOwnAddress(const QHostAddress &address)
{
    return address.isLoopback() || QNetworkInterface::allAddresses().contains(address);
}

} // namespace

bool isLocalUrl(const QString &url)
{
    return url.contains("127.0.0.1"_L1) || url.contains("localhost"_L1);
}

QString withoutFinalDot(const QString &name)
{
    return name.endsWith(u'.') ? name.chopped(1) : name;
}

bool isThisMachine(const QString &url, const QString &magicDNSName)
{
    const QString host = withoutFinalDot(QUrl(url).host());
    if (host.isEmpty()) {
        return false;
    }
    if (host.compare("localhost"_L1, Qt::CaseInsensitive) == 0 ||
        host.compare(withoutFinalDot(magicDNSName), Qt::CaseInsensitive) == 0) {
        return true;
    }
    QHostAddress address;
    return address.setAddress(host) && isOwnAddress(address);
}

} // namespace ostrelle
