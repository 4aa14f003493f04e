import QtQuick
import QtQuick.Templates as T
import Ostrelle

// One tab of the panel's tab row.
T.TabButton {
    id: button

    required property string label
    required property string symbol
    required property bool selected

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(Theme.hitArea, implicitContentHeight + topPadding + bottomPadding)
    horizontalPadding: Theme.smallGap
    verticalPadding: Theme.gap
    // Only the template's kind decides what a screen reader takes the control for.
    checkable: false
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Keys.forwardTo: [keys]
    Accessible.name: button.label
    Accessible.selected: button.selected
    Accessible.onPressAction: button.clicked()

    ButtonKeys {
        id: keys

        button: button
        onPressed: button.clicked()
    }

    contentItem: Column {
        id: column

        readonly property color foreground: button.selected ? Theme.teal
            : button.hovered ? Theme.textPrimary : Theme.textSecondary

        spacing: Theme.tabGap

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            name: button.symbol
            color: column.foreground
            size: Theme.controlSize
        }

        Label {
            width: parent.width
            text: button.label
            color: column.foreground
            font.pixelSize: Theme.captionSize
            font.weight: Font.Medium
            horizontalAlignment: Text.AlignHCenter
            Accessible.ignored: true
        }
    }

    background: Rectangle {
        radius: Theme.smallRadius
        color: button.selected ? Theme.faded(Theme.teal, Theme.washOpacity)
            : button.pressed ? Theme.surfacePressed
            : button.hovered ? Theme.surface : "transparent"
        border.width: button.visualFocus ? Theme.focusWidth : 0
        border.color: Theme.focusRing

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }
    }
}
