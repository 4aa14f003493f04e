import QtQuick
import Ostrelle

// Where a gateway's token is pasted. What is typed lives with its owner, which clears it when the
// panel or the editor closes. Only a field that the user has emptied takes the stored token away.
FocusScope {
    id: editor

    required property string token
    required property string problem // why it could not be stored

    property bool isCleared: false // by the user

    signal edited(string token)
    signal saved()
    signal dismissed() // there is nothing to save

    implicitHeight: column.implicitHeight
    Component.onCompleted: field.forceActiveFocus()

    function finish() {
        if (editor.token !== "" || editor.isCleared) {
            editor.saved();
        } else {
            editor.dismissed();
        }
    }

    Column {
        id: column

        width: parent.width

        Item {
            width: parent.width
            height: field.implicitHeight

            SecretField {
                id: field

                anchors.left: parent.left
                anchors.right: save.left
                anchors.rightMargin: Theme.gap
                focus: true
                placeholderText: "Paste gateway token"
                text: editor.token
                onTextEdited: {
                    // A pasted line break leaves an empty field empty.
                    editor.isCleared = field.text === "" && editor.token !== "";
                    editor.edited(field.text);
                }
                onAccepted: editor.finish()
            }

            PushButton {
                id: save

                anchors.right: parent.right
                anchors.verticalCenter: field.verticalCenter
                kind: PushButton.Prominent
                text: "Save"
                onClicked: editor.finish()
            }
        }

        FieldProblem {
            width: parent.width
            text: editor.problem
        }
    }
}
