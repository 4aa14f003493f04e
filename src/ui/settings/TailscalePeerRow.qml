import QtQuick
import Ostrelle

// One device of the tailnet, and whether a gateway answers on it.
Item {
    id: row

    required property string name
    required property string ip
    // True, false, or undefined until it has been asked.
    required property var gatewayOnline

    readonly property bool isSilent: row.gatewayOnline === false

    signal added()

    implicitHeight: Math.max(column.implicitHeight, add.implicitHeight)

    Symbol {
        id: device

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        name: "desktopcomputer"
        color: Theme.cyan
        size: Theme.headingSize
    }

    Column {
        id: column

        anchors.left: device.right
        anchors.leftMargin: Theme.gap
        anchors.right: status.left
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter

        Label {
            width: parent.width
            text: row.name
            font.weight: Font.Medium
        }

        Label {
            width: parent.width
            text: row.ip
            secondary: true
            font.pixelSize: Theme.smallSize
        }

        Label {
            width: parent.width
            visible: row.isSilent
            text: "No gateway — install Duskrell on this device"
            color: Theme.yellow
            font.pixelSize: Theme.captionSize
            font.weight: Font.Medium
            wrapMode: Text.Wrap
        }
    }

    Symbol {
        id: status

        readonly property string help: row.isSilent
            ? "Duskrell gateway not responding on this device" : ""

        anchors.right: add.left
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        visible: row.gatewayOnline !== undefined
        name: row.isSilent ? "exclamationmark.triangle.fill" : "checkmark.circle.fill"
        color: row.isSilent ? Theme.yellow : Theme.green

        HoverHandler {
            id: pointer
        }

        HoverHelp {
            text: status.help
            wanted: pointer.hovered
        }
    }

    PushButton {
        id: add

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        font.pixelSize: Theme.smallSize
        text: "Add"
        Accessible.name: "Add " + row.name
        Accessible.description: status.help
        onClicked: row.added()
    }
}
