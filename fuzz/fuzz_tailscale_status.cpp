// Feeds a text to the readers of what the Tailscale tool prints as its status.

#include "Input.h"
#include "gateway/TailscaleStatus.h"

#include <algorithm>

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray status = bytesOf(data, size);
    const auto name = selfMagicDNS(status);
    require(!name || !name->isEmpty());
    require(std::ranges::none_of(onlinePeers(status),
                                 [](const OnlinePeer &peer) { return peer.ip.contains(u':'); }));
    return 0;
}
