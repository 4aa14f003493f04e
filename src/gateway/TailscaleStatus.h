#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace ostrelle
{

// A device of the tailnet that is online.
struct OnlinePeer {
    QString hostname; // MagicDNS name without the trailing dot
    QString ip;       // its first IPv4 address

    friend bool operator==(const OnlinePeer &, const OnlinePeer &) = default;
};

// This machine's MagicDNS name in the output of `tailscale status --json`, without one trailing
// dot. Absent when the output is no such document or the name is empty.
std::optional<QString> selfMagicDNS(const QByteArray &status);

// The peers that are online and have an IPv4 address, in document order. Peers that are not of the
// expected form are left out; a text that is no such document has none.
QList<OnlinePeer> onlinePeers(const QByteArray &status);

} // namespace ostrelle
