pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The glowing line that runs down the canvas from the main node, in the colours of those at work.
Item {
    id: spine

    required property list<color> colors
    // Whether a light runs down the line, and how far it is: 0 at the top and 1 at the bottom.
    required property bool moves
    required property real phase

    // The last colour lasts, and then fades.
    readonly property color lastColor: spine.colors[spine.colors.length - 1]
    readonly property var stops: [...spine.colors, spine.lastColor, Theme.faded(spine.lastColor, 0)]

    width: Theme.spineWidth
    visible: height > 0

    function stopAt(index: int): int {
        return Math.round(index / (spine.stops.length - 1) * spine.height);
    }

    Repeater {
        model: [{width: 10, opacity: 0.12}, {width: 5, opacity: 0.25}, {width: 2, opacity: 1}]

        Item {
            id: strand

            required property var modelData

            anchors.horizontalCenter: spine.horizontalCenter
            width: strand.modelData.width
            opacity: strand.modelData.opacity

            Repeater {
                model: spine.stops.length - 1

                Rectangle {
                    id: part

                    required property int index

                    y: spine.stopAt(part.index)
                    width: strand.width
                    height: spine.stopAt(part.index + 1) - y
                    gradient: Gradient {
                        GradientStop {
                            position: 0
                            color: spine.stops[part.index]
                        }
                        GradientStop {
                            position: 1
                            color: spine.stops[part.index + 1] ?? "transparent"
                        }
                    }
                }
            }
        }
    }

    FlowLight {
        anchors.horizontalCenter: spine.horizontalCenter
        y: Math.round(spine.phase * (spine.height - height))
        color: spine.colors[0]
        visible: spine.moves
    }
}
