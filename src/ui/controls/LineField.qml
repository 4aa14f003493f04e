import QtQuick
import QtQuick.Templates as T
import Ostrelle

// A field for one line of text. Return is `accepted`.
T.TextField {
    id: field

    // What those call it who do not see it.
    property string accessibleName: field.placeholderText
    // What is pasted keeps its line breaks, seen as spaces. Else it loses them, such as the one that
    // ends what a terminal printed.
    property bool keepsLineBreaks: false

    implicitWidth: Theme.fieldWidth
    implicitHeight: Math.max(Theme.hitArea, contentHeight + topPadding + bottomPadding)
    leftPadding: Theme.fieldPadding
    rightPadding: Theme.fieldPadding
    topPadding: Theme.fieldVerticalPadding
    bottomPadding: Theme.fieldVerticalPadding
    font.pixelSize: Theme.bodySize
    color: Theme.textPrimary
    placeholderTextColor: Theme.textSecondary
    selectionColor: Theme.selection
    selectedTextColor: Theme.textPrimary
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true
    Accessible.name: field.accessibleName
    onTextChanged: field.dropLineBreaks()

    // Not by an assignment, which would break the owner's binding.
    function dropLineBreaks() {
        const line = field.text.replace(/[\r\n]+/g, "");
        if (!field.keepsLineBreaks && line.length < field.text.length) {
            field.remove(0, field.text.length);
            field.insert(0, line);
        }
    }

    background: Rectangle {
        radius: Theme.smallRadius
        color: Theme.field
        border.width: field.activeFocus ? Theme.focusWidth : 1
        border.color: field.activeFocus ? Theme.faded(Theme.focusRing, 0.8) : Theme.hairline
    }

    LostFocus {
        control: field
        controlFocusReason: field.focusReason
    }

    Label {
        x: field.leftPadding
        width: field.width - field.leftPadding - field.rightPadding
        height: field.height
        visible: field.length === 0 && field.preeditText === ""
        text: field.placeholderText
        color: field.placeholderTextColor
        font: field.font
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
