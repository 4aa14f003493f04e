import QtQuick
import QtQuick.Templates as T
import Ostrelle

// The quiet surface that things which belong together stand on.
T.Pane {
    id: card

    property color tint: Theme.surface
    property color outline: Theme.hairline

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: Theme.padding

    background: Rectangle {
        color: card.tint
        radius: Theme.radius
        border.color: card.outline
    }
}
