import QtQuick
import Ostrelle

// A line of text that elides in the middle and shows itself whole while the pointer rests on it;
// with a wrapMode it takes as many lines as it needs.
Text {
    id: label

    property bool secondary: false

    color: label.secondary ? Theme.textSecondary : Theme.textPrimary
    font.pixelSize: Theme.bodySize
    elide: label.wrapMode === Text.NoWrap ? Text.ElideMiddle : Text.ElideNone
    maximumLineCount: label.wrapMode === Text.NoWrap ? 1 : undefined // also of a text that brings breaks
    textFormat: Text.PlainText
    horizontalAlignment: Text.AlignLeft // said aloud, so that it is mirrored with the layout
    Accessible.role: Accessible.StaticText
    Accessible.name: label.wrapMode === Text.NoWrap ? Texts.help(label.text) : label.text

    HoverHandler {
        id: pointer

        enabled: label.truncated
    }

    HoverHelp {
        text: label.text
        wanted: pointer.hovered && label.truncated
    }
}
