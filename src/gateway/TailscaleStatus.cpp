#include "gateway/TailscaleStatus.h"

#include "core/Json.h"
#include "settings/OwnMachine.h"

#include <algorithm>

namespace ostrelle
{

namespace
{

JsonValue parsed(const QByteArray &status)
{
    return parseJson({status.constData(), static_cast<std::size_t>(status.size())})
        .value_or(JsonValue());
}

// The first text that is no IPv6 address. Absent when there is none, or when the value is no list
// of texts.
std::optional<QString> firstIPv4(const JsonValue &value)
{
    const JsonArray *addresses = value.array();
    const auto isText = [](const JsonValue &address) { return address.string().has_value(); };
    if (addresses == nullptr || !std::ranges::all_of(*addresses, isText)) {
        return std::nullopt;
    }
    const auto found = std::ranges::find_if(
        *addresses, [](const JsonValue &address) { return !address.string()->contains(u':'); });
    return found == addresses->end() ? std::nullopt : found->string();
}

std::optional<OnlinePeer> readPeer(const JsonValue &value)
{
    const auto name = value["DNSName"].string();
    const auto ip = firstIPv4(value["TailscaleIPs"]);
    if (value["Online"].boolean() != true || !name || !ip) {
        return std::nullopt;
    }
    return OnlinePeer{.hostname = withoutFinalDot(*name), .ip = *ip};
}

} // namespace

std::optional<QString> selfMagicDNS(const QByteArray &status)
{
    const JsonValue document = parsed(status);
    const QString host = withoutFinalDot(document["Self"]["DNSName"].string().value_or(QString()));
    return host.isEmpty() ? std::nullopt : std::optional(host);
}

QList<OnlinePeer> onlinePeers(const QByteArray &status)
{
    const JsonValue document = parsed(status);
    const JsonObject *peers = document["Peer"].object();
    if (peers == nullptr) {
        return {};
    }
    QList<OnlinePeer> online;
    for (const JsonMember &peer : peers->members()) {
        if (auto read = readPeer(peer.value)) {
            online.append(*std::move(read));
        }
    }
    return online;
}

} // namespace ostrelle
