import QtQuick
import Ostrelle

// Asks for the administrator's password and installs what is missing.
Column {
    id: block

    required property SetupManager setupManager

    spacing: Theme.gap

    function install() {
        if (button.enabled) {
            block.setupManager.installDuskrell();
        }
    }

    Connections {
        target: block.setupManager

        function onNeedsSudoPasswordChanged() {
            if (block.setupManager.needsSudoPassword) {
                field.forceActiveFocus();
                field.selectAll();
            }
        }
    }

    Label {
        width: parent.width
        text: "Mac password required for installation:"
        color: block.setupManager.needsSudoPassword ? Theme.yellow : Theme.textSecondary
        font.pixelSize: Theme.smallSize
        wrapMode: Text.Wrap
    }

    Explanation {
        width: parent.width
        text: "here: your login password"
    }

    SecretField {
        id: field

        readonly property int lockSpace: lock.width + 2 * Theme.gap
        readonly property bool isMirrored: field.LayoutMirroring.enabled

        width: parent.width
        leftPadding: field.isMirrored ? Theme.fieldPadding : field.lockSpace
        rightPadding: field.isMirrored ? field.lockSpace : Theme.fieldPadding
        placeholderText: "Mac password"
        text: block.setupManager.sudoPassword
        onTextEdited: block.setupManager.sudoPassword = field.text
        onAccepted: block.install()

        Symbol {
            id: lock

            anchors.left: parent.left
            anchors.leftMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            name: "lock.fill"
            color: Theme.textSecondary
        }
    }

    Label {
        width: parent.width
        visible: block.setupManager.sudoPasswordError
        text: "Incorrect password — try again"
        color: Theme.legible(Theme.red, 0)
        font.pixelSize: Theme.smallSize
        wrapMode: Text.Wrap
    }

    PushButton {
        id: button

        width: parent.width
        kind: PushButton.Prominent
        enabled: !block.setupManager.isInstallingDuskrell && block.setupManager.sudoPassword !== ""
        busy: block.setupManager.isInstallingDuskrell
        text: block.setupManager.isInstallingDuskrell ? "Installing…" : "Install Everything"
        onClicked: block.install()
    }
}
