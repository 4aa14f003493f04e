import QtQuick
import Ostrelle

// Text that can be selected and copied. It takes as many lines as it needs, but shows no more than
// the beginning of what nobody would read.
TextEdit {
    id: text

    property string content: ""

    text: Theme.shortened(text.content)
    color: Theme.textPrimary
    selectionColor: Theme.selection
    selectedTextColor: text.color
    font.pixelSize: Theme.bodySize
    textFormat: TextEdit.PlainText
    horizontalAlignment: TextEdit.AlignLeft // said aloud, so that it is mirrored with the layout
    wrapMode: TextEdit.Wrap
    readOnly: true
    selectByMouse: true
    Accessible.role: Accessible.StaticText
    Accessible.name: text.text
}
