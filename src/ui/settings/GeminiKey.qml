import QtQuick
import Ostrelle

// The Gemini API key that travels with the pairing code.
Column {
    id: section

    required property GatewaySettings settings

    spacing: Theme.smallGap

    FieldLabel {
        width: parent.width
        field: key
    }

    SecretField {
        id: key

        width: parent.width
        text: section.settings.geminiAPIKey
        accessibleName: "Gemini API key"
        onTextEdited: section.settings.geminiAPIKey = text
    }

    Row {
        width: parent.width

        PushButton {
            width: Math.min(implicitWidth, parent.width)
            kind: PushButton.Plain
            color: Theme.legible(Theme.blue, 0)
            font.pixelSize: Theme.smallSize
            text: "Get a key at " + section.settings.geminiKeyPage
            onClicked: Desktop.openPage(section.settings.geminiKeyPage)
        }
    }
}
