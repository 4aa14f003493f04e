#pragma once

#include <QString>

namespace ostrelle
{

// Whether the URL contains "127.0.0.1" or "localhost", in this letter case: for names on the
// screen, and for where documents come from. Never decide by it where a secret may go.
bool isLocalUrl(const QString &url);

// A name without the dot that ends it where DNS writes it in full.
QString withoutFinalDot(const QString &name);

// Whether the URL's host is this machine: the loopback, an address of one of its interfaces, or its
// name in the tailnet, which is empty while not known. Asks the kernel for the addresses.
bool isThisMachine(const QString &url, const QString &magicDNSName);

} // namespace ostrelle
