import QtQuick
import Ostrelle

// A line of a card, in its place below the name, with a symbol before it if it has one.
Item {
    id: line

    property string symbol: ""
    required property string content

    implicitHeight: label.height

    Symbol {
        id: symbol

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        visible: name !== ""
        name: line.symbol
        color: Theme.textSecondary
        size: Theme.smallSize
    }

    Label {
        id: label

        anchors.left: parent.left
        anchors.leftMargin: Theme.smallSize + Theme.gap
        anchors.right: parent.right
        text: line.content
        secondary: true
        Accessible.ignored: true
        font.pixelSize: Theme.smallSize
    }
}
