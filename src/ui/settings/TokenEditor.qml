import QtQuick
import Ostrelle

// Where a gateway's token is pasted; saved empty, it takes the stored one away. What is typed lives
// with its owner, which clears it when the editor closes.
FocusScope {
    id: editor

    required property string token

    signal edited(string token)
    signal saved()

    implicitHeight: field.implicitHeight
    Component.onCompleted: field.forceActiveFocus()

    SecretField {
        id: field

        anchors.left: parent.left
        anchors.right: save.left
        anchors.rightMargin: Theme.gap
        focus: true
        placeholderText: "Paste gateway token"
        text: editor.token
        onTextEdited: editor.edited(text)
        onAccepted: editor.saved()
    }

    PushButton {
        id: save

        anchors.right: parent.right
        anchors.verticalCenter: field.verticalCenter
        kind: PushButton.Prominent
        text: "Save"
        onClicked: editor.saved()
    }
}
