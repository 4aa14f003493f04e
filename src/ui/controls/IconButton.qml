import QtQuick
import Ostrelle

// A button that is a symbol. Its text is what it is called for those who do not see it, and its
// help on hover.
BaseButton {
    id: button

    required property string symbol
    property color color: Theme.textSecondary
    property int symbolSize: Theme.controlSize
    // A round surface behind the symbol, also while nobody points at it.
    property bool raised: false

    implicitWidth: Math.max(Theme.hitArea, button.symbolSize + Theme.gap)
    implicitHeight: implicitWidth
    opacity: button.enabled ? 1 : Theme.disabledOpacity

    HoverHelp {
        text: button.text
        wanted: button.hovered
    }

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: button.symbol
            color: button.hovered && button.color === Theme.textSecondary ? Theme.textPrimary : button.color
            size: button.symbolSize
        }
    }

    background: Rectangle {
        radius: height / 2
        color: button.pressed ? Theme.surfacePressed
            : button.hovered ? Theme.surfaceHovered
            : button.raised ? Theme.surface : "transparent"
        border.width: button.visualFocus ? Theme.focusWidth : 0
        border.color: Theme.focusRing

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }
    }
}
