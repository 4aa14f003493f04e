import QtQuick
import Ostrelle

// One thing that is known, under its name.
Item {
    id: row

    required property string label
    required property string value

    implicitHeight: Math.max(label.height, value.height)

    Label {
        id: label

        anchors.left: parent.left
        width: Math.round(parent.width * 0.28)
        text: row.label
        secondary: true
        Accessible.ignored: true
    }

    SelectableText {
        id: value

        anchors.left: label.right
        anchors.leftMargin: Theme.gap
        anchors.right: parent.right
        content: row.value
        Accessible.name: row.label + ": " + row.value
    }
}
