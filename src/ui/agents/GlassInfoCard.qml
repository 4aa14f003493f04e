import QtQuick
import Ostrelle

// A card with a title and rows below it.
Card {
    id: card

    required property string title
    default property alias content: rows.data

    contentItem: Column {
        id: rows

        spacing: Theme.gap

        Label {
            width: parent.width
            text: card.title
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
    }
}
