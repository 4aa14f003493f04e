import QtQuick
import Ostrelle

// An address with a lock before it when the way there is encrypted, and a button that copies it.
Item {
    id: row

    required property string address

    readonly property bool isEncrypted: row.address.startsWith("https")

    implicitWidth: lock.width + label.implicitWidth + copy.width + 2 * Theme.gap
    implicitHeight: Math.max(copy.height, label.implicitHeight)

    Symbol {
        id: lock

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        visible: row.isEncrypted
        name: "lock.fill"
        color: Theme.green
        width: row.isEncrypted ? size : 0
        size: Theme.smallSize
    }

    Label {
        id: label

        anchors.left: lock.right
        anchors.leftMargin: row.isEncrypted ? Theme.smallGap : 0
        anchors.right: copy.left
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        text: row.address
        secondary: !row.isEncrypted
        color: row.isEncrypted ? Theme.green : Theme.textSecondary
    }

    CopyButton {
        id: copy

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        copiedText: row.address
    }
}
