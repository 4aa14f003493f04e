import QtQuick
import Ostrelle

// Saves a gateway by its address.
Column {
    id: section

    required property GatewayProfiles profiles

    spacing: Theme.smallGap

    FieldLabel {
        width: parent.width
        field: address
    }

    Item {
        width: parent.width
        height: address.implicitHeight

        LineField {
            id: address

            anchors.left: parent.left
            anchors.right: add.left
            anchors.rightMargin: Theme.gap
            placeholderText: "http://ip:18789"
            text: section.profiles.manualURL
            inputMethodHints: Qt.ImhUrlCharactersOnly | Qt.ImhNoPredictiveText
            accessibleName: "Add Gateway Manually"
            onTextEdited: section.profiles.manualURL = text
            onAccepted: section.profiles.addManualGateway()
        }

        PushButton {
            id: add

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: "Add"
            enabled: section.profiles.manualURL !== ""
            Accessible.name: "Add gateway"
            onClicked: section.profiles.addManualGateway()
        }
    }

    FieldProblem {
        width: parent.width
        text: section.profiles.manualProblem
    }
}
