import QtQuick
import Ostrelle

// A button with a text, and a symbol before it if one is named. A prominent one is what the user is
// expected to press; a destructive one takes something away; a plain one has no surface.
BaseButton {
    id: button

    enum Kind { Bordered, Prominent, Destructive, Plain }

    property int kind: PushButton.Bordered
    property string symbol: ""
    // A spinner stands in for the symbol.
    property bool busy: false
    property color color: button.kind === PushButton.Prominent ? Theme.textOnAccent
        : button.kind === PushButton.Destructive ? Theme.legible(Theme.red, Theme.washOpacity) : Theme.textPrimary

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(Theme.hitArea, implicitContentHeight + topPadding + bottomPadding)
    horizontalPadding: button.kind === PushButton.Plain ? Theme.smallGap : Theme.padding
    verticalPadding: Theme.smallGap
    font.pixelSize: Theme.bodySize
    font.weight: button.kind === PushButton.Prominent ? Font.DemiBold : Font.Medium
    opacity: button.enabled ? 1 : Theme.disabledOpacity

    contentItem: Item {
        implicitWidth: row.symbolSpace + label.implicitWidth
        implicitHeight: row.implicitHeight

        Row {
            id: row

            readonly property real symbolSpace: button.busy || button.symbol !== ""
                ? Theme.controlSize + row.spacing : 0

            anchors.centerIn: parent
            spacing: Theme.symbolGap

            Spinner {
                anchors.verticalCenter: parent.verticalCenter
                visible: button.busy
                color: button.color
            }

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                visible: !button.busy && button.symbol !== ""
                name: button.symbol
                color: button.color
            }

            Label {
                id: label

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, button.availableWidth - row.symbolSpace)
                text: button.text
                color: button.color
                font: button.font
                Accessible.ignored: true
            }
        }
    }

    background: Rectangle {
        readonly property color rest: button.kind === PushButton.Prominent ? Theme.tiffanyBlue
            : button.kind === PushButton.Destructive ? Theme.faded(Theme.red, Theme.washOpacity)
            : button.kind === PushButton.Plain ? "transparent" : Theme.surface

        radius: Theme.smallRadius
        color: button.kind === PushButton.Prominent
            ? (button.pressed ? Qt.darker(rest, 1.2) : button.hovered ? Qt.lighter(rest, 1.08) : rest)
            : (button.pressed ? Theme.surfacePressed : button.hovered ? Theme.surfaceHovered : rest)
        border.width: button.visualFocus ? Theme.focusWidth
            : button.kind === PushButton.Plain || button.kind === PushButton.Prominent ? 0 : 1
        border.color: button.visualFocus ? Theme.focusRing
            : button.kind === PushButton.Destructive ? Theme.faded(Theme.red, Theme.outlineOpacity) : Theme.hairline

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }
    }
}
