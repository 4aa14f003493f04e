import QtQuick
import Ostrelle

// Text that can be selected and copied. It takes as many lines as it needs, but shows no more than
// the beginning of what nobody would read: to lay out one endless word takes time that grows with
// its square.
TextEdit {
    id: text

    property string content: ""

    readonly property int mostCharacters: 10000

    text: text.content.length > text.mostCharacters
        ? text.content.slice(0, text.mostCharacters) + "…" : text.content
    color: Theme.textPrimary
    selectionColor: Theme.faded(Theme.tiffanyBlue, 0.4)
    selectedTextColor: text.color
    font.pixelSize: Theme.bodySize
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    readOnly: true
    selectByMouse: true
    Accessible.role: Accessible.StaticText
    Accessible.name: text.text
}
