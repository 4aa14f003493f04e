pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// A line of text that elides in the middle and shows itself whole while the pointer rests on it;
// with a wrapMode it takes as many lines as it needs.
Text {
    id: label

    property bool secondary: false
    property Item help: null

    color: label.secondary ? Theme.textSecondary : Theme.textPrimary
    font.pixelSize: Theme.bodySize
    elide: label.wrapMode === Text.NoWrap ? Text.ElideMiddle : Text.ElideNone
    maximumLineCount: label.wrapMode === Text.NoWrap ? 1 : undefined // also of a text that brings breaks
    textFormat: Text.PlainText
    horizontalAlignment: Text.AlignLeft // said aloud, so that it is mirrored with the layout
    Accessible.role: Accessible.StaticText
    Accessible.name: label.wrapMode === Text.NoWrap ? Texts.help(label.text) : label.text

    // Most texts are never cut, and there are many: only one that is gets its help.
    onTruncatedChanged: {
        if (label.truncated && !label.help) {
            label.help = helpMaker.createObject(label) as Item;
        }
    }

    Component {
        id: helpMaker

        Item {
            anchors.fill: parent

            HoverHandler {
                id: pointer
            }

            HoverHelp {
                text: label.text
                wanted: pointer.hovered && label.truncated
            }
        }
    }
}
