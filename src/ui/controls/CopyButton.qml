import QtQuick
import Ostrelle

// Puts a text on the clipboard and says so with a short check mark.
IconButton {
    id: button

    required property string copiedText

    // For how long it says so, in milliseconds.
    property int answerTime: Theme.answerTime
    property bool hasCopied: false

    symbol: button.hasCopied ? "checkmark" : "doc.on.doc"
    color: button.hasCopied ? Theme.green : Theme.textSecondary
    text: button.hasCopied ? "Copied" : "Copy"
    onClicked: {
        Desktop.copy(button.copiedText);
        button.hasCopied = true;
        answer.restart();
    }

    Timer {
        id: answer

        interval: button.answerTime
        onTriggered: button.hasCopied = false
    }
}
