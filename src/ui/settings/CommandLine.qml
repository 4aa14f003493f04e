import QtQuick
import Ostrelle

// A command for a terminal, with a button that copies it.
Rectangle {
    id: line

    required property string command

    implicitWidth: label.implicitWidth + copy.width + 2 * Theme.gap
    implicitHeight: Math.max(copy.height, label.implicitHeight) + Theme.smallGap
    radius: Theme.smallRadius
    color: Theme.field

    Label {
        id: label

        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.right: copy.left
        anchors.verticalCenter: parent.verticalCenter
        text: line.command
        font.family: Theme.monospaced
        font.pixelSize: Theme.smallSize
    }

    CopyButton {
        id: copy

        anchors.right: parent.right
        anchors.rightMargin: Theme.smallGap
        anchors.verticalCenter: parent.verticalCenter
        copiedText: line.command
    }
}
