import QtQuick
import Ostrelle

// The address by which other devices reach the gateway, ready to be copied.
Item {
    id: row

    required property string address
    required property bool isSecure

    implicitHeight: Math.max(label.height, copy.height)

    Symbol {
        id: icon

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        name: row.isSecure ? "lock.fill" : "link"
        color: row.isSecure ? Theme.green : Theme.textSecondary
        size: Theme.bodySize
    }

    Label {
        id: label

        anchors.left: icon.right
        anchors.leftMargin: Theme.gap
        anchors.right: copy.left
        anchors.rightMargin: Theme.smallGap
        anchors.verticalCenter: parent.verticalCenter
        text: row.address
        color: row.isSecure ? Theme.green : Theme.legible(Theme.blue, 0)
    }

    CopyButton {
        id: copy

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        copiedText: row.address
    }
}
