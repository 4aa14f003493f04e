import QtQuick
import Ostrelle

// Tells what went wrong.
Card {
    id: card

    required property string message

    tint: Theme.faded(Theme.red, Theme.washOpacity)
    outline: Theme.faded(Theme.red, Theme.outlineOpacity)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: card.message

    contentItem: Item {
        implicitHeight: Math.max(symbol.height, text.height)

        Symbol {
            id: symbol

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            name: "exclamationmark.triangle.fill"
            color: Theme.yellow
            size: Theme.headingSize
        }

        Label {
            id: text

            anchors.left: symbol.right
            anchors.leftMargin: Theme.gap
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: card.message
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
    }
}
