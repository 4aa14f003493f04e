import QtQuick
import QtQuick.Templates as T
import Ostrelle

// A switch at the end of its label, with an explanation below if there is one.
T.Switch {
    id: control

    property string caption: ""

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    verticalPadding: Math.max(0, (Theme.hitArea - implicitContentHeight) / 2)
    rightPadding: control.mirrored ? 0 : indicator.width + Theme.gap
    leftPadding: control.mirrored ? indicator.width + Theme.gap : 0
    focusPolicy: Qt.StrongFocus
    font.pixelSize: Theme.bodySize
    opacity: control.enabled ? 1 : Theme.disabledOpacity
    Accessible.name: control.text
    Accessible.description: control.caption
    Keys.forwardTo: [keys]

    ButtonKeys {
        id: keys

        button: control
        onPressed: {
            control.toggle();
            control.toggled();
        }
    }

    contentItem: Column {
        spacing: Theme.lineGap

        Label {
            width: parent.width
            text: control.text
            font: control.font
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }

        Label {
            width: parent.width
            visible: control.caption !== ""
            text: control.caption
            secondary: true
            font.pixelSize: Theme.smallSize
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
    }

    indicator: Rectangle {
        x: control.mirrored ? 0 : control.width - width
        anchors.verticalCenter: parent ? parent.verticalCenter : undefined
        width: Theme.switchWidth
        height: Theme.switchHeight
        radius: height / 2
        color: control.checked ? Theme.tiffanyBlue : Theme.surfacePressed
        border.width: control.visualFocus ? Theme.focusWidth : 0
        border.color: Theme.textPrimary

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }

        Rectangle {
            x: control.checked !== control.mirrored ? parent.width - width - y : y
            y: Theme.switchMargin
            width: height
            height: parent.height - 2 * y
            radius: height / 2
            color: Theme.textPrimary

            Behavior on x {
                NumberAnimation {
                    duration: Theme.quick
                    easing.type: Easing.OutQuad
                }
            }
        }
    }
}
