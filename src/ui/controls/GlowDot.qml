import QtQuick
import Ostrelle

// A dot in a soft light of its own colour.
Rectangle {
    id: light

    required property color tint

    implicitWidth: 2 * Theme.gap
    implicitHeight: implicitWidth
    radius: width / 2
    color: Theme.faded(light.tint, 0.16)

    Rectangle {
        anchors.centerIn: parent
        width: Theme.padding
        height: width
        radius: width / 2
        color: Theme.faded(light.tint, 0.2)
    }

    Rectangle {
        anchors.centerIn: parent
        width: Theme.dotSize
        height: width
        radius: width / 2
        color: light.tint
    }
}
