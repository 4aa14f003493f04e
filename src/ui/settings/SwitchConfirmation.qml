import QtQuick
import Ostrelle

// Asks whether to leave the gateway in use for another one.
FocusScope {
    id: confirmation

    required property string activeName

    signal cancelled()
    signal confirmed()

    implicitHeight: card.implicitHeight
    Component.onCompleted: confirmButton.forceActiveFocus()

    Card {
        id: card

        width: parent.width
        outline: Theme.faded(Theme.tiffanyBlue, Theme.outlineOpacity)
        padding: Theme.gap

        Column {
            width: card.availableWidth
            spacing: Theme.gap

            Label {
                width: parent.width
                text: "Switch from " + Texts.oneLine(confirmation.activeName) + "?"
                wrapMode: Text.Wrap
            }

            Flow {
                width: parent.width
                spacing: Theme.gap

                PushButton {
                    text: "Cancel"
                    onClicked: confirmation.cancelled()
                }

                PushButton {
                    id: confirmButton

                    kind: PushButton.Prominent
                    text: "Switch"
                    focus: true
                    onClicked: confirmation.confirmed()
                }
            }
        }
    }
}
