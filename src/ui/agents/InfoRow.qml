import QtQuick
import Ostrelle

// One thing that is known, beside its name, or below it where the name needs the room.
Item {
    id: row

    required property string label
    required property string value

    readonly property real labelWidth: Math.round(row.width * 0.28)
    readonly property bool stacked: label.implicitWidth > row.labelWidth

    implicitHeight: Math.max(label.height, value.y + value.height)

    Label {
        id: label

        anchors.left: parent.left
        width: row.stacked ? row.width : row.labelWidth
        text: row.label
        secondary: true
        Accessible.ignored: true
    }

    SelectableText {
        id: value

        anchors.right: parent.right
        y: row.stacked ? label.height : 0
        width: row.stacked ? row.width : row.width - row.labelWidth - Theme.gap
        content: row.value
        Accessible.name: row.label + ": " + row.value
    }
}
