import QtQuick
import Ostrelle

// The third step: the gateway gets its agent, and this program the gateway's token.
SetupSection {
    id: section

    required property SetupManager setupManager

    title: "3. Duskrell Setup"
    step: 3

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.agent
    }

    CheckRow {
        width: parent.width
        check: section.setupManager.checks.token
    }

    Column {
        width: parent.width
        visible: !section.setupManager.hasAgent
        spacing: Theme.gap

        Explanation {
            width: parent.width
            text: "Duskrell needs initial configuration — this sets up your AI provider and API keys."
        }

        PushButton {
            width: Math.min(implicitWidth, parent.width)
            symbol: "terminal"
            text: "Open Setup in Terminal"
            onClicked: section.setupManager.openOnboarding()
        }

        Explanation {
            width: parent.width
            text: "After finishing, tap Re-check below."
        }
    }

    Column {
        width: parent.width
        visible: section.setupManager.hasAgent && !section.setupManager.hasGatewayToken
        spacing: Theme.gap

        Explanation {
            width: parent.width
            text: "Paste the gateway token from your Duskrell config. Find it with:"
        }

        CommandNote {
            width: parent.width
            commands: ["duskrell config get gateway.auth.token"]
        }

        Item {
            width: parent.width
            implicitHeight: Math.max(field.height, save.height)

            LineField {
                id: field

                anchors.left: parent.left
                anchors.right: save.left
                anchors.rightMargin: Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                placeholderText: "Paste gateway token"
                inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
                text: section.setupManager.gatewayTokenInput
                onTextEdited: section.setupManager.gatewayTokenInput = field.text
                onAccepted: section.setupManager.saveGatewayToken()
            }

            PushButton {
                id: save

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, parent.width / 2)
                text: "Save"
                onClicked: section.setupManager.saveGatewayToken()
            }
        }
    }
}
