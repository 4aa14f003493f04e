pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// One saved gateway. Choosing it asks whether to switch to it.
FocusScope {
    id: row

    required property string url
    required property string displayName
    required property string displayURL
    required property bool isActive
    // True, false, or undefined while it is not known.
    required property var hasToken
    required property string tokenTail

    required property GatewayProfiles profiles

    readonly property bool isEditing: row.profiles.editingProfileId === row.url
    readonly property bool isPending: row.profiles.pendingSwitchGateway === row.url

    implicitHeight: column.implicitHeight

    // Nobody can answer them once the row is gone.
    function takeQuestionsAlong() {
        if (row.isEditing) {
            row.profiles.editingProfileId = "";
        }
        if (row.isPending) {
            row.profiles.cancelSwitch();
        }
    }

    function takeFocusBack(isOpen: bool, control: Item) {
        if (!isOpen && row.activeFocus) {
            control.forceActiveFocus();
        }
    }

    Column {
        id: column

        width: parent.width

        Item {
            width: parent.width
            height: Math.max(choice.implicitHeight, key.height)

            ProfileChoice {
                id: choice

                anchors.left: parent.left
                anchors.right: key.left
                anchors.verticalCenter: parent.verticalCenter
                focus: true
                name: row.displayName
                address: row.displayURL
                isActive: row.isActive
                tokenTail: row.tokenTail
                onClicked: row.profiles.requestSwitch(row.url)
            }

            IconButton {
                id: key

                anchors.right: remove.left
                anchors.verticalCenter: parent.verticalCenter
                symbol: "key.fill"
                color: row.hasToken === false ? Theme.teal : Theme.textSecondary
                text: "Token of " + Texts.oneLine(row.displayName)
                onClicked: row.profiles.editingProfileId = row.isEditing ? "" : row.url
            }

            IconButton {
                id: remove

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                symbol: "xmark"
                color: Theme.red
                text: "Remove " + Texts.oneLine(row.displayName)
                onClicked: row.profiles.removeGateway(row.url)
            }
        }

        Fold {
            width: parent.width
            gap: Theme.smallGap
            open: row.isEditing
            onOpenChanged: row.takeFocusBack(open, key)

            TokenEditor {
                token: row.profiles.profileTokenInput
                problem: row.profiles.profileTokenProblem
                onEdited: token => row.profiles.profileTokenInput = token
                onSaved: row.profiles.saveProfileToken()
                onDismissed: row.profiles.editingProfileId = ""
            }
        }

        Fold {
            width: parent.width
            gap: Theme.smallGap
            open: row.isPending
            onOpenChanged: row.takeFocusBack(open, choice)

            SwitchConfirmation {
                activeName: row.profiles.activeGatewayName
                onCancelled: row.profiles.cancelSwitch()
                onConfirmed: row.profiles.confirmSwitch()
            }
        }
    }
}
