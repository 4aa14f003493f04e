#pragma once

#include <QString>

#include <expected>

namespace ostrelle
{

// Why something is no address of a gateway.
enum class AddressProblem {
    Characters, // it has some that cannot be seen, or a backslash
    UserPart,   // readers disagree about which machine is meant
    Scheme,     // it is neither http nor https, in whatever letter case
    NoHost,     // there is a scheme, and nothing behind it
    LooksLocal, // "127.0.0.1" or "localhost" is in it and is not its host
    Query,      // or a fragment: what is asked for there would become a part of it
};

// For the user; the end of a sentence that begins with "it".
QString toString(AddressProblem problem);

// Whether the text may become a gateway's base URL. One without a scheme, "box" or "box:18789" say,
// need not be a URL. By its text alone, so that it holds however a reader takes the URL apart.
std::expected<void, AddressProblem> checkGatewayAddress(const QString &address);

// The address as people may see it: a password, a query and a fragment, which an older version's
// profile may have, are left out. A password reaches to the last "@", whatever is in it, but begins
// with no port. An address without any of these stays as it is.
QString withoutPassword(const QString &address);

// The address's host for a log line: bounded, and without what may be a secret.
QString printableHost(const QString &address);

} // namespace ostrelle
