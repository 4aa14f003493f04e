#include "gateway/TailscaleStatus.h"

#include <simdjson.h>
#include <string_view>

namespace ostrelle
{

namespace
{

using simdjson::dom::element;

QString withoutTrailingDot(std::string_view name)
{
    if (name.ends_with('.')) {
        name.remove_suffix(1);
    }
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

// Empty unless the value is a list of nothing but texts, and one of them is no IPv6 address.
std::optional<QString> firstIPv4(element value)
{
    simdjson::dom::array addresses;
    if (value.get(addresses) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    std::optional<QString> first;
    for (const element address : addresses) {
        std::string_view text;
        if (address.get(text) != simdjson::SUCCESS) {
            return std::nullopt;
        }
        if (!first && !text.contains(':')) {
            first = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
        }
    }
    return first;
}

std::optional<OnlinePeer> readPeer(element value)
{
    bool online = false;
    std::string_view name;
    element addresses;
    if (value["Online"].get(online) != simdjson::SUCCESS || !online ||
        value["DNSName"].get(name) != simdjson::SUCCESS ||
        value["TailscaleIPs"].get(addresses) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    const auto ip = firstIPv4(addresses);
    return ip ? std::optional(OnlinePeer{.hostname = withoutTrailingDot(name), .ip = *ip})
              : std::nullopt;
}

} // namespace

std::optional<QString> selfMagicDNS(const QByteArray &status)
{
    simdjson::dom::parser parser;
    std::string_view name;
    const auto document = parser.parse(status.constData(), static_cast<std::size_t>(status.size()));
    if (document["Self"]["DNSName"].get(name) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    const QString host = withoutTrailingDot(name);
    return host.isEmpty() ? std::nullopt : std::optional(host);
}

QList<OnlinePeer> onlinePeers(const QByteArray &status)
{
    simdjson::dom::parser parser;
    simdjson::dom::object peers;
    const auto document = parser.parse(status.constData(), static_cast<std::size_t>(status.size()));
    if (document["Peer"].get(peers) != simdjson::SUCCESS) {
        return {};
    }
    QList<OnlinePeer> online;
    for (const auto &[node, value] : peers) {
        if (auto peer = readPeer(value)) {
            online.append(*std::move(peer));
        }
    }
    return online;
}

} // namespace ostrelle
