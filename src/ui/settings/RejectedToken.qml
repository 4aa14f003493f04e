import QtQuick
import Ostrelle

// Says that the gateway rejects the token. This machine's gateway can make a new one.
Column {
    id: warning

    required property GatewayViewModel gatewayVM
    required property bool isLocalGateway

    bottomPadding: Theme.smallGap

    SymbolText {
        width: parent.width
        symbol: "exclamationmark.triangle.fill"
        color: Theme.yellow
        text: warning.isLocalGateway ? "Gateway is rejecting this token."
            : "Remote gateway rejected token — ask the owner for the correct token."
    }

    Item {
        width: parent.width
        height: reset.height
        visible: warning.isLocalGateway

        PushButton {
            id: reset

            anchors.left: parent.left
            anchors.leftMargin: Theme.smallGap
            width: Math.min(implicitWidth, parent.width - Theme.smallGap)
            kind: PushButton.Destructive
            text: "Reset Token"
            visible: !warning.gatewayVM.isResettingToken
            onClicked: warning.gatewayVM.resetGatewayToken()
        }

        Spinner {
            anchors.left: parent.left
            anchors.leftMargin: Theme.smallGap
            anchors.verticalCenter: parent.verticalCenter
            visible: warning.gatewayVM.isResettingToken
        }
    }
}
