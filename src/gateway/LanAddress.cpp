#include "gateway/LanAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>

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

// Behind these is another network, or none.
bool isVirtual(const QString &interface)
{
    constexpr std::array prefixes{"docker"_L1, "br-"_L1, "virbr"_L1, "veth"_L1,
                                  "tun"_L1,    "tap"_L1, "wg"_L1,    "tailscale"_L1};
    return std::ranges::any_of(prefixes, [&](auto prefix) { return interface.startsWith(prefix); });
}

bool isReachable(const InterfaceAddress &address)
{
    return isOnLan(address) && address.isUp && !isVirtual(address.interface);
}

} // namespace

QList<InterfaceAddress> interfaceAddresses()
{
    ifaddrs *list = nullptr;
    if (::getifaddrs(&list) != 0) {
        return {};
    }
    constexpr unsigned usable = IFF_UP | IFF_RUNNING;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
    QList<InterfaceAddress> addresses;
    for (const ifaddrs *entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET) {
            addresses.append({.interface = QString::fromLocal8Bit(entry->ifa_name),
                              .ipv4 = dottedQuad(entry->ifa_addr),
                              .isUp = (entry->ifa_flags & usable) == usable});
        }
    }
    return addresses;
}

std::optional<QString> firstLanAddress(const QList<InterfaceAddress> &addresses)
{
    auto first = std::ranges::find_if(addresses, isReachable);
    if (first == addresses.end()) {
        first = std::ranges::find_if(addresses, isOnLan);
    }
    return first == addresses.end() ? std::nullopt : std::optional(first->ipv4);
}

} // namespace ostrelle
