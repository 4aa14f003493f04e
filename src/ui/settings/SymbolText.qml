import QtQuick
import Ostrelle

// A text that wraps, with a symbol before its first line.
Item {
    id: row

    required property string symbol
    required property string text
    property color color: Theme.textPrimary

    implicitWidth: mark.width + Theme.gap + label.implicitWidth
    implicitHeight: Math.max(Theme.hitArea, label.implicitHeight + Theme.gap)

    Symbol {
        id: mark

        anchors.left: parent.left
        anchors.leftMargin: Theme.smallGap
        anchors.verticalCenter: parent.verticalCenter
        name: row.symbol
        color: row.color
    }

    Label {
        id: label

        anchors.left: mark.right
        anchors.leftMargin: Theme.symbolGap
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        text: row.text
        wrapMode: Text.Wrap
    }
}
