pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// Whether other devices are offered this machine's MagicDNS address, and which one that is.
Column {
    id: section

    required property GatewayViewModel gatewayVM

    SwitchRow {
        width: parent.width
        text: "MagicDNS (HTTPS)"
        caption: "Uses Tailscale HTTPS with auto-renewed Let's Encrypt certs. Requires 'tailscale serve' running."
        checked: section.gatewayVM.useMagicDNS
        onToggled: section.gatewayVM.useMagicDNS = checked
    }

    Fold {
        width: parent.width
        gap: Theme.smallGap
        open: section.gatewayVM.useMagicDNS

        Column {
            CopyableAddress {
                width: parent.width
                visible: section.gatewayVM.magicDNSURL !== ""
                address: section.gatewayVM.magicDNSURL
            }

            Label {
                width: parent.width
                visible: section.gatewayVM.magicDNSURL === ""
                text: "MagicDNS not available — check Tailscale"
                color: Theme.yellow
                font.pixelSize: Theme.smallSize
                wrapMode: Text.Wrap
            }
        }
    }
}
