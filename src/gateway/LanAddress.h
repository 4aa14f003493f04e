#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace ostrelle
{

struct InterfaceAddress {
    QString interface;
    QString ipv4; // dotted quad
};

// This machine's IPv4 addresses in the order of the system's list; none when that cannot be had.
QList<InterfaceAddress> interfaceAddresses();

// The first address under which the local network could reach this machine: none of the loopback,
// of a tunnel or of Tailscale's range.
std::optional<QString> firstLanAddress(const QList<InterfaceAddress> &addresses);

} // namespace ostrelle
