#pragma once

#include <QString>

namespace ostrelle
{

// Whether the URL's host is this machine: the loopback, an address of one of its interfaces, or its
// name in the tailnet, which is empty while not known. Asks the kernel for the addresses.
bool isThisMachine(const QString &url, const QString &magicDNSName);

} // namespace ostrelle
