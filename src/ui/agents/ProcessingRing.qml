import QtQuick
import Ostrelle

// The arc that sweeps to and fro around an agent at work.
Item {
    id: ring

    required property color color
    required property bool running

    Symbol {
        id: arc

        anchors.fill: parent
        name: "arc"
        color: ring.color
        size: Math.round(ring.width)

        SequentialAnimation on rotation {
            running: ring.running
            loops: Animation.Infinite

            NumberAnimation {
                from: 0
                to: 360
                duration: Theme.bubbleRing
                easing.type: Easing.InOutQuad
            }
            NumberAnimation {
                from: 360
                to: 0
                duration: Theme.bubbleRing
                easing.type: Easing.InOutQuad
            }
        }
    }
}
