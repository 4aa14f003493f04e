import QtQuick
import Ostrelle

// Warns that the way to the gateway is not encrypted, and offers the way out.
Card {
    id: banner

    required property GatewayViewModel viewModel

    tint: Theme.faded(Theme.yellow, Theme.washOpacity)
    outline: Theme.faded(Theme.yellow, Theme.outlineOpacity)

    Column {
        width: banner.availableWidth
        spacing: Theme.gap

        Item {
            width: parent.width
            implicitHeight: Math.max(title.height, dismiss.height)

            Symbol {
                id: icon

                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                name: "exclamationmark.triangle.fill"
                color: Theme.yellow
            }

            Label {
                id: title

                anchors.left: icon.right
                anchors.leftMargin: Theme.gap
                anchors.right: dismiss.left
                anchors.verticalCenter: parent.verticalCenter
                text: "Insecure Connection"
                font.bold: true
            }

            IconButton {
                id: dismiss

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                symbol: "xmark"
                symbolSize: Theme.smallSize
                text: "Dismiss"
                onClicked: banner.viewModel.dismissSecurityWarning()
            }
        }

        Label {
            width: parent.width
            text: "Traffic is unencrypted. Anyone on your network could intercept messages."
            secondary: true
            font.pixelSize: Theme.smallSize
            wrapMode: Text.Wrap
        }

        PushButton {
            width: Math.min(implicitWidth, parent.width)
            visible: banner.viewModel.tailscaleInstalled
            enabled: !banner.viewModel.isEnablingTailscale
            busy: banner.viewModel.isEnablingTailscale
            symbol: "shield.checkered"
            text: banner.viewModel.isEnablingTailscale ? "Enabling..." : "Enable Tailscale Encryption"
            font.weight: Font.DemiBold
            onClicked: banner.viewModel.enableTailscaleServe()
        }

        Label {
            width: parent.width
            visible: banner.viewModel.tailscaleInstalled && text !== ""
            text: banner.viewModel.enableTailscaleError
            color: Theme.legible(Theme.red, 0)
            font.pixelSize: Theme.smallSize
            wrapMode: Text.Wrap
            elide: Text.ElideRight
            maximumLineCount: 6 // a tool may have said a lot
        }

        Label {
            width: parent.width
            visible: !banner.viewModel.tailscaleInstalled
            text: "Install Tailscale (free) to encrypt all traffic:"
            secondary: true
            font.pixelSize: Theme.smallSize
            wrapMode: Text.Wrap
        }

        PushButton {
            width: Math.min(implicitWidth, parent.width)
            visible: !banner.viewModel.tailscaleInstalled
            kind: PushButton.Plain
            symbol: "arrow.down.circle"
            text: "Get Tailscale"
            color: Theme.teal
            font.weight: Font.DemiBold
            onClicked: Desktop.openPage("https://tailscale.com/download")
        }
    }
}
