import QtQuick
import QtQuick.Templates as T
import Ostrelle

// What all buttons have in common. How one looks is its own affair.
T.AbstractButton {
    id: button

    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: button.text
    Keys.forwardTo: [keys]

    ButtonKeys {
        id: keys

        button: button
        onPressed: button.clicked()
    }
}
