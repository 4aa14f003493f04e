import QtQuick
import Ostrelle

// One of the voice agent's controls: a symbol on a round surface, above its caption.
BaseButton {
    id: button

    required property string symbol

    implicitWidth: Math.max(implicitContentWidth, Theme.hitArea)
    implicitHeight: implicitContentHeight
    font.pixelSize: Theme.captionSize
    font.weight: Font.DemiBold

    contentItem: Column {
        spacing: Theme.smallGap

        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(2 * Theme.titleSize, button.availableWidth - Theme.gap)
            height: width
            radius: width / 2
            color: button.pressed ? Theme.surfacePressed
                : button.hovered ? Theme.surfaceHovered : Theme.surfaceRaised
            border.width: button.visualFocus ? Theme.focusWidth : 0
            border.color: Theme.focusRing

            Behavior on color {
                ColorAnimation {
                    duration: Theme.quick
                }
            }

            Symbol {
                anchors.centerIn: parent
                name: button.symbol
                size: Math.min(Theme.titleSize, parent.width / 2)
            }
        }

        Label {
            width: button.availableWidth
            horizontalAlignment: Text.AlignHCenter
            text: button.text
            secondary: !button.hovered
            font: button.font
            Accessible.ignored: true
        }
    }
}
