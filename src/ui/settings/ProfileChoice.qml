import QtQuick
import QtQuick.Templates as T
import Ostrelle

// A saved gateway to choose; pressed as a whole.
T.RadioButton {
    id: choice

    required property string name
    required property string address
    required property bool isActive
    required property string tokenTail

    implicitHeight: Math.max(Theme.hitArea, implicitContentHeight + topPadding + bottomPadding)
    padding: Theme.smallGap
    checked: choice.isActive
    // Only a switch that was confirmed changes what is checked.
    onToggled: choice.checked = Qt.binding(() => choice.isActive)
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Keys.forwardTo: [keys]
    Accessible.name: [choice.name, choice.address, summary.tokenText].filter(each => each !== "").join(", ")

    ButtonKeys {
        id: keys

        button: choice
        onPressed: choice.clicked()
    }

    contentItem: ProfileSummary {
        id: summary

        name: choice.name
        address: choice.address
        isActive: choice.isActive
        tokenTail: choice.tokenTail
    }

    background: Rectangle {
        radius: Theme.smallRadius
        color: choice.pressed ? Theme.surfacePressed
            : choice.hovered ? Theme.surfaceHovered : "transparent"
        border.width: choice.visualFocus ? Theme.focusWidth : 0
        border.color: Theme.focusRing
    }
}
