import QtQuick
import Ostrelle

// One workstream of a project.
Item {
    id: row

    required property string name
    required property string status
    required property real progress
    required property string note

    implicitHeight: texts.height

    StatusDot {
        id: dot

        anchors.left: parent.left
        y: Math.round((name.height - height) / 2)
        status: row.status
    }

    Column {
        id: texts

        anchors.left: dot.right
        anchors.leftMargin: Theme.gap
        anchors.right: progress.left
        anchors.rightMargin: Theme.gap
        spacing: Theme.lineGap

        Label {
            id: name

            width: parent.width
            text: row.name
        }

        Label {
            width: parent.width
            visible: text !== ""
            text: Theme.shortened(row.note)
            secondary: true
            font.pixelSize: Theme.smallSize
            wrapMode: Text.Wrap
        }
    }

    Label {
        id: progress

        anchors.right: parent.right
        text: row.progress + "%"
        secondary: true
    }
}
