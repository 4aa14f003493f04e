import QtQuick
import Ostrelle

// The gateway in use: its name and address, its pairing code, and whether it takes the token.
Column {
    id: section

    required property GatewayViewModel gatewayVM
    required property GatewayProfiles profiles
    required property GatewayPairing pairing

    SectionHeading {
        width: parent.width
        text: "CONNECTED TO"
        color: Theme.tiffanyBlue
    }

    Label {
        width: parent.width
        topPadding: Theme.smallGap
        text: section.profiles.activeGatewayName
        font.pixelSize: Theme.titleSize
        font.weight: Font.DemiBold
    }

    CopyableAddress {
        width: parent.width
        address: section.profiles.activeGatewayURL
    }

    Item {
        width: parent.width
        height: Theme.gap
    }

    Card {
        id: card

        width: parent.width

        Column {
            width: card.availableWidth
            spacing: Theme.gap

            PairingCode {
                width: parent.width
                pairing: section.pairing
            }

            Divider {
                width: parent.width
            }

            ActiveToken {
                width: parent.width
                gatewayVM: section.gatewayVM
                profiles: section.profiles
            }
        }
    }
}
