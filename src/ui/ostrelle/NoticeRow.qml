import QtQuick
import Ostrelle

// A line that asks for attention.
Item {
    id: row

    required property string text

    implicitHeight: Math.max(icon.height, label.height)

    Symbol {
        id: icon

        anchors.left: parent.left
        name: "exclamationmark.triangle.fill"
        color: Theme.yellow
    }

    Label {
        id: label

        anchors.left: icon.right
        anchors.leftMargin: Theme.gap
        anchors.right: parent.right
        text: row.text
        secondary: true
        font.pixelSize: Theme.smallSize
        wrapMode: Text.Wrap
    }
}
