import QtQuick
import Ostrelle

// How far something is, as a line. The number stands beside it.
Rectangle {
    id: line

    required property real progress // percent
    property color tint: Theme.teal

    implicitHeight: Theme.lineWidth
    radius: height / 2
    color: Theme.surface

    Rectangle {
        anchors.left: parent.left
        width: parent.width * Math.max(0, Math.min(line.progress, 100)) / 100
        height: parent.height
        radius: height / 2
        color: line.tint
    }
}
