import QtQuick
import Ostrelle

// Stands in for a list that has nothing in it.
Card {
    id: card

    required property string message

    padding: 2 * Theme.padding

    contentItem: Label {
        text: card.message
        secondary: true
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
    }
}
