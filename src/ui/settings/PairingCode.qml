pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// Hands the gateway in use to a phone by a QR code. The code's place is kept while it is made.
Column {
    id: section

    required property GatewayPairing pairing

    Row {
        width: parent.width

        PushButton {
            width: Math.min(implicitWidth, parent.width)
            kind: PushButton.Plain
            symbol: "qrcode"
            text: "Show QR to pair phone"
            Accessible.description: section.pairing.showQR ? "Shown" : "Hidden"
            onClicked: section.pairing.showQR = !section.pairing.showQR
        }
    }

    Fold {
        width: parent.width
        open: section.pairing.showQR

        Column {
            spacing: Theme.gap

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(Theme.qrSize, parent.width)
                height: width
                radius: Theme.smallRadius
                color: code.isEmpty ? Theme.surface : "transparent"

                QrImage {
                    id: code

                    objectName: "qrImage"
                    anchors.fill: parent
                    code: section.pairing.qrCode
                    Accessible.role: Accessible.Graphic
                    Accessible.name: "QR code"
                    Accessible.ignored: code.isEmpty
                }

                Spinner {
                    anchors.centerIn: parent
                    visible: section.pairing.isBuilding && code.isEmpty
                }
            }

            Label {
                width: parent.width
                text: "Scan with iPhone camera to connect"
                secondary: true
                font.pixelSize: Theme.smallSize
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
        }
    }
}
