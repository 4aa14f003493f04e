pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// Whether the gateway in use has a token that it takes, and where another one is entered.
FocusScope {
    id: section

    required property GatewayViewModel gatewayVM
    required property GatewayProfiles profiles

    implicitHeight: column.implicitHeight

    Column {
        id: column

        width: parent.width

        Fold {
            width: parent.width
            gap: 0
            open: section.profiles.lacksToken

            SymbolText {
                symbol: "key.fill"
                color: Theme.yellow
                text: "No token — chat won't auth"
            }
        }

        Fold {
            width: parent.width
            gap: 0
            open: section.gatewayVM.tokenRejected

            RejectedToken {
                gatewayVM: section.gatewayVM
                isLocalGateway: section.profiles.isLocalGateway
            }
        }

        Row {
            width: parent.width

            PushButton {
                id: entryButton

                width: Math.min(implicitWidth, parent.width)
                kind: PushButton.Plain
                symbol: "key.fill"
                text: section.profiles.lacksToken ? "Add Token" : "Change Token"
                focus: true
                onClicked: section.profiles.showTokenField = !section.profiles.showTokenField
            }
        }

        Fold {
            width: parent.width
            gap: Theme.smallGap
            open: section.profiles.showTokenField
            onOpenChanged: {
                if (!open && section.activeFocus) {
                    entryButton.forceActiveFocus();
                }
            }

            Column {
                spacing: Theme.gap

                Label {
                    width: parent.width
                    text: "Run this on the gateway machine to get the token:"
                    secondary: true
                    font.pixelSize: Theme.smallSize
                    wrapMode: Text.Wrap
                }

                CommandLine {
                    width: parent.width
                    command: "duskrell config get gateway.auth.token"
                }

                TokenEditor {
                    width: parent.width
                    token: section.profiles.tokenInput
                    problem: section.profiles.tokenProblem
                    onEdited: token => section.profiles.tokenInput = token
                    onSaved: section.profiles.saveActiveToken()
                    onDismissed: section.profiles.showTokenField = false
                }
            }
        }
    }
}
