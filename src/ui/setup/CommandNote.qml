pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// What mends something on this system: an advice, and what to type or to open.
Column {
    id: note

    property string advice: ""
    property var commands: []

    readonly property var lines: note.commands.filter(command => command !== "")

    visible: note.advice !== "" || note.lines.length > 0

    Explanation {
        width: parent.width
        visible: note.advice !== ""
        text: note.advice
    }

    Repeater {
        model: note.lines

        Item {
            id: line

            required property string modelData

            width: note.width
            implicitHeight: Math.max(command.height, copy.height)

            SelectableText {
                id: command

                anchors.left: parent.left
                anchors.right: copy.left
                anchors.rightMargin: Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                content: line.modelData
                font.family: Theme.monospaced
                font.pixelSize: Theme.smallSize
            }

            CopyButton {
                id: copy

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                copiedText: line.modelData
            }
        }
    }
}
