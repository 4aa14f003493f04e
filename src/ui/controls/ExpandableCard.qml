import QtQuick
import QtQuick.Templates as T
import Ostrelle

// A card that shows more of itself after a tap. The chevron's row is the button that the keyboard
// and screen readers find; the whole card takes the tap.
T.AbstractButton {
    id: card

    // Always seen.
    property alias summary: summary.data
    // Beside the chevron.
    property string more: ""
    property bool expandable: true
    property bool expanded: false
    default property alias content: fold.content

    implicitHeight: column.implicitHeight + 2 * Theme.padding
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.description: card.more
    Accessible.checkable: true
    Accessible.checked: card.expanded
    Keys.onReturnPressed: card.clicked()
    Keys.onEnterPressed: card.clicked()
    onClicked: card.expanded = !card.expanded

    background: Rectangle {
        radius: Theme.radius
        color: card.hovered ? Theme.surfaceHovered : Theme.surface
        border.width: card.visualFocus ? 2 : 1
        border.color: card.visualFocus ? Theme.focusRing : Theme.hairline

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }
    }

    contentItem: Item {
        Column {
            id: column

            x: Theme.padding
            y: Theme.padding
            width: card.width - 2 * Theme.padding

            Column {
                id: summary

                width: parent.width
                spacing: Theme.smallGap
            }

            Item {
                width: parent.width
                height: chevron.height + Theme.gap

                Symbol {
                    id: chevron

                    anchors.bottom: parent.bottom
                    name: card.expanded ? "chevron.down" : "chevron.right"
                    color: Theme.textSecondary
                    size: Theme.smallSize
                }

                Label {
                    anchors.left: chevron.right
                    anchors.leftMargin: Theme.smallGap
                    anchors.right: parent.right
                    anchors.verticalCenter: chevron.verticalCenter
                    text: card.more
                    secondary: true
                    font.pixelSize: Theme.smallSize
                    Accessible.ignored: true
                }
            }

            Fold {
                id: fold

                width: parent.width
                open: card.expanded
            }
        }
    }
}
