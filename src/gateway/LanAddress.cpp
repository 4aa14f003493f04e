#include "gateway/LanAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <ifaddrs.h>
#include <memory>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString dottedQuad(const sockaddr *address)
{
    std::array<char, INET_ADDRSTRLEN> text{};
    const auto *ipv4 = reinterpret_cast<const sockaddr_in *>(address);
    ::inet_ntop(AF_INET, &ipv4->sin_addr, text.data(), text.size());
    return QString::fromLatin1(text.data());
}

bool isOnLan(const InterfaceAddress &address)
{
    return !address.interface.startsWith("lo"_L1) && !address.interface.startsWith("utun"_L1) &&
           !address.ipv4.startsWith("127."_L1) && !address.ipv4.startsWith("100."_L1);
}

} // namespace

QList<InterfaceAddress> interfaceAddresses()
{
    ifaddrs *list = nullptr;
    if (::getifaddrs(&list) != 0) {
        return {};
    }
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
    QList<InterfaceAddress> addresses;
    for (const ifaddrs *entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET) {
            addresses.append({.interface = QString::fromLocal8Bit(entry->ifa_name),
                              .ipv4 = dottedQuad(entry->ifa_addr)});
        }
    }
    return addresses;
}

std::optional<QString> firstLanAddress(const QList<InterfaceAddress> &addresses)
{
    const auto first = std::ranges::find_if(addresses, isOnLan);
    return first == addresses.end() ? std::nullopt : std::optional(first->ipv4);
}

} // namespace ostrelle
