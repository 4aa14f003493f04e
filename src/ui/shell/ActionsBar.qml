import QtQuick
import Ostrelle

// The bar at the bottom of each tab, with the action that ends the program.
Item {
    id: bar

    implicitHeight: quit.height + 2 * Theme.gap

    PushButton {
        id: quit

        anchors.right: parent.right
        anchors.rightMargin: Theme.actionsPadding - quit.rightPadding
        anchors.verticalCenter: parent.verticalCenter
        kind: PushButton.Plain
        text: "Quit"
        color: quit.hovered ? Theme.textPrimary : Theme.textSecondary
        font.pixelSize: Theme.smallSize
        font.weight: Font.Normal
        onClicked: Desktop.quit()
    }
}
