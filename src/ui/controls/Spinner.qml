import QtQuick
import Ostrelle

// Says that something is under way. It turns only while it can be seen.
Item {
    id: spinner

    property color color: Theme.textSecondary
    property int size: Theme.controlSize

    implicitWidth: spinner.size
    implicitHeight: spinner.size
    Accessible.role: Accessible.Animation
    Accessible.name: "In progress"

    Symbol {
        id: drawing

        name: "spinner"
        color: spinner.color
        size: spinner.size

        RotationAnimator on rotation {
            from: 0
            to: 360
            duration: Theme.spinnerTurn
            loops: Animation.Infinite
            running: spinner.visible && Theme.motion
        }
    }
}
