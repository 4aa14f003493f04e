import QtQuick
import Ostrelle

// A field for a secret: it shows dots, and nothing of it can be copied or guessed by the keyboard.
LineField {
    echoMode: TextInput.Password
    passwordMaskDelay: 0
    inputMethodHints: Qt.ImhHiddenText | Qt.ImhSensitiveData | Qt.ImhNoPredictiveText
        | Qt.ImhNoAutoUppercase
}
