#include "settings/OwnMachine.h"

#include <QHostAddress>
#include <QNetworkInterface>
#include <QUrl>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

bool isOwnAddress(QHostAddress address)
{
    address.setScopeId({}); // which interface it was reached through
    const auto own = QNetworkInterface::allAddresses();
    return address.isLoopback() || std::ranges::any_of(own, [&](QHostAddress mine) {
               mine.setScopeId({});
               return mine == address;
           });
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
