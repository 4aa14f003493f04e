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
    readonly property string help: row.isSilent
        ? "Duskrell gateway not responding on this device" : ""

    signal added()

    implicitHeight: line.height + (row.isSilent ? warning.height : 0)

    Item {
        id: line

        anchors.left: parent.left
        anchors.right: parent.right
        height: Math.max(names.implicitHeight, add.implicitHeight)

        Symbol {
            id: device

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            name: "desktopcomputer"
            color: Theme.cyan
            size: Theme.headingSize
        }

        Column {
            id: names

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
        }

        Symbol {
            id: status

            anchors.right: add.left
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            visible: row.gatewayOnline !== undefined
            name: row.isSilent ? "exclamationmark.triangle.fill" : "checkmark.circle.fill"
            color: row.isSilent ? Theme.yellow : Theme.green
            Accessible.ignored: false
            Accessible.role: Accessible.Graphic
            Accessible.name: row.help || "gateway answers"

            HoverHandler {
                id: pointer
            }

            HoverHelp {
                text: row.help
                wanted: pointer.hovered
            }
        }

        PushButton {
            id: add

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            font.pixelSize: Theme.smallSize
            text: "Add"
            Accessible.name: "Add " + Texts.oneLine(row.name)
            Accessible.description: row.help
            onClicked: row.added()
        }
    }

    Label {
        id: warning

        anchors.top: line.bottom
        anchors.left: parent.left
        anchors.leftMargin: device.width + Theme.gap
        anchors.right: parent.right
        visible: row.isSilent
        text: "No gateway — install Duskrell on this device"
        color: Theme.yellow
        font.pixelSize: Theme.captionSize
        font.weight: Font.Medium
        wrapMode: Text.Wrap
    }
}
