pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The glowing line that runs down the canvas from the main node, in the colours of those at work.
Item {
    id: spine

    required property list<color> colors
    // While it glows, a light runs down the line.
    property bool glowing: false

    Repeater {
        model: [{width: 10, opacity: 0.12}, {width: 5, opacity: 0.25}, {width: 2, opacity: 1}]

        Rectangle {
            required property var modelData

            anchors.horizontalCenter: spine.horizontalCenter
            width: modelData.width
            height: spine.height
            radius: width / 2
            opacity: modelData.opacity
            gradient: Gradient {
                GradientStop {
                    position: 0
                    color: spine.colors[0]
                }
                GradientStop {
                    position: 0.5
                    color: spine.colors[Math.floor((spine.colors.length - 1) / 2)]
                }
                GradientStop {
                    position: 0.8
                    color: spine.colors[spine.colors.length - 1]
                }
                GradientStop {
                    position: 1
                    color: Theme.faded(spine.colors[spine.colors.length - 1], 0)
                }
            }
        }
    }

    FlowLight {
        id: light

        anchors.horizontalCenter: spine.horizontalCenter
        y: light.phase * (spine.height - height)
        color: spine.colors[0]
        running: spine.glowing
        visible: spine.glowing && Theme.motion
        duration: Theme.spineFlow
    }
}
