import QtQuick
import QtQuick.Templates as T

Rectangle {
    width: 380
    height: 700
    color: "#0F0F1F"

    T.Button {
        contentItem: Text {
            text: "Ostrelle"
        }
    }
}
