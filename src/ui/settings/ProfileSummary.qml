import QtQuick
import Ostrelle

// What a saved gateway is called, where it is, how its token ends, and whether it is in use.
Item {
    id: summary

    required property string name
    required property string address
    required property bool isActive
    required property string tokenTail

    readonly property string tokenText: summary.tokenTail === "" ? "" : "Token: ••••" + summary.tokenTail

    implicitHeight: texts.implicitHeight

    Symbol {
        id: mark

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        name: summary.isActive ? "checkmark.circle.fill" : "circle"
        color: summary.isActive ? Theme.green : Theme.textSecondary
        size: Theme.headingSize
    }

    Column {
        id: texts

        anchors.left: mark.right
        anchors.leftMargin: Theme.gap
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter

        Label {
            width: parent.width
            text: summary.name
            font.weight: Font.Medium
            Accessible.ignored: true
        }

        Row {
            width: parent.width
            spacing: Theme.smallGap

            Symbol {
                id: lock

                anchors.verticalCenter: parent.verticalCenter
                visible: summary.address.startsWith("https")
                name: "lock.fill"
                color: Theme.green
                size: Theme.captionSize
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - (lock.visible ? lock.width + parent.spacing : 0)
                text: summary.address
                secondary: true
                font.pixelSize: Theme.smallSize
                Accessible.ignored: true
            }
        }

        Label {
            width: parent.width
            visible: text !== ""
            text: summary.tokenText
            color: Theme.legible(Theme.faded(Theme.teal, 0.7), 0)
            font.pixelSize: Theme.captionSize
            Accessible.ignored: true
        }
    }
}
