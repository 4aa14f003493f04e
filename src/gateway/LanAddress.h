#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace ostrelle
{

struct InterfaceAddress {
    QString interface;
    QString ipv4; // dotted quad
    bool isUp = true;
};

// This machine's IPv4 addresses in the order of the system's list; none when that cannot be had.
QList<InterfaceAddress> interfaceAddresses();

// The first address by which the local network could reach this machine: not of the loopback, not
// of a tunnel, not of Tailscale's range. Interfaces that are down, and those that containers,
// virtual machines and tunnels have, count only when there is no other.
std::optional<QString> firstLanAddress(const QList<InterfaceAddress> &addresses);

} // namespace ostrelle
