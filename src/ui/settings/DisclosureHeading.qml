import QtQuick
import Ostrelle

// The name of a part of the settings that opens below it.
BaseButton {
    id: heading

    required property bool open

    readonly property color color: heading.hovered ? Theme.textPrimary : Theme.textSecondary

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(Theme.hitArea, implicitContentHeight)
    leftPadding: heading.mirrored ? chevron.width + Theme.gap : 0
    rightPadding: heading.mirrored ? 0 : chevron.width + Theme.gap
    Accessible.description: heading.open ? "Expanded" : "Collapsed"

    contentItem: SectionHeading {
        text: heading.text
        color: heading.color
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: Theme.smallRadius
        color: "transparent"
        border.width: heading.visualFocus ? Theme.focusWidth : 0
        border.color: Theme.focusRing
    }

    Symbol {
        id: chevron

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        name: "chevron.right"
        color: heading.color
        rotation: heading.open ? 90 : heading.mirrored ? 180 : 0

        Behavior on rotation {
            enabled: Theme.motion

            NumberAnimation {
                duration: Theme.calm
                easing.type: Easing.OutCubic
            }
        }
    }
}
