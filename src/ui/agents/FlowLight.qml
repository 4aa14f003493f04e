import QtQuick
import Ostrelle

// A small light that travels along a line. Whoever shows it places it.
Rectangle {
    id: light

    width: Theme.lightSize
    height: width
    radius: width / 2
    border.color: Theme.faded(light.color, 0.4)
    border.width: 1
}
