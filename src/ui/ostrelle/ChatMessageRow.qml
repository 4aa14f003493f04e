import QtQuick
import Ostrelle

// One message of the quick chat: who says it, and what.
Item {
    id: row

    required property string role
    required property string text

    readonly property bool isUser: row.role === "user"

    implicitHeight: words.height + (copy.visible ? copy.height : 0)

    Item {
        id: icon

        anchors.left: parent.left
        width: Theme.chatIconWidth
        height: firstLine.height

        Symbol {
            anchors.centerIn: parent
            name: row.isUser ? "person.fill" : "sparkles"
            color: row.isUser ? Theme.blue : Theme.teal
            size: Theme.captionSize
        }
    }

    FontMetrics {
        id: firstLine

        font: words.font
    }

    SelectableText {
        id: words

        anchors.left: icon.right
        anchors.leftMargin: Theme.gap
        anchors.right: parent.right
        anchors.rightMargin: Theme.padding // the scroll bar's
        content: row.text
        color: row.isUser ? Theme.textSecondary : Theme.textPrimary
        Accessible.name: (row.isUser ? "You: " : "Assistant: ") + words.text
    }

    // Of a text that is shown only in part, all is to be had.
    CopyButton {
        id: copy

        anchors.top: words.bottom
        anchors.left: words.left
        visible: words.text !== row.text
        copiedText: row.text
        Accessible.description: "the whole text"
    }
}
