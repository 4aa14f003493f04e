// Makes gateways of the devices in any status of the Tailscale tool: an address that is accepted
// names the device, and this machine only when it says so.

#include "Input.h"
#include "core/HttpClient.h"
#include "gateway/GatewayAddress.h"
#include "gateway/GatewayNames.h"
#include "gateway/TailscaleStatus.h"
#include "settings/OwnMachine.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray status = bytesOf(data, size);
    for (const OnlinePeer &peer : onlinePeers(status)) {
        const QString address = QStringLiteral("https://") + peer.hostname;
        require(printableHost(address).size() <= 253);
        const auto url = endpoint(address, QStringLiteral("/health"));
        if (!checkGatewayAddress(address) || !url) {
            continue;
        }
        require(url->userInfo().isEmpty() && url->scheme() == QStringLiteral("https"));
        const bool isLocal = url->host() == QStringLiteral("127.0.0.1") ||
                             url->host() == QStringLiteral("localhost");
        require(!isLocalUrl(address) || isLocal);
    }
    return 0;
}
