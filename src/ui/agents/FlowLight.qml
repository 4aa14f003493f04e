import QtQuick
import Ostrelle

// A small light that travels along a line. Whoever shows it places it by `phase`.
Rectangle {
    id: light

    required property bool running
    required property int duration // of one way, in milliseconds

    property real phase

    width: Theme.dotSize - 2
    height: width
    radius: width / 2
    border.color: Theme.faded(light.color, 0.4)
    border.width: 1

    NumberAnimation on phase {
        from: 0
        to: 1
        duration: light.duration
        loops: Animation.Infinite
        running: light.running && light.visible
    }
}
