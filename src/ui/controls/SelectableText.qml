import QtQuick
import Ostrelle

// Text that can be selected and copied. It takes as many lines as it needs.
TextEdit {
    id: text

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
