import QtQuick
import QtQuick.Templates as T
import Ostrelle

// Shows where one is in what scrolls; it is there only when something is out of view.
T.ScrollBar {
    id: bar

    implicitWidth: Theme.scrollBarWidth
    padding: Theme.scrollBarMargin
    visible: size < 1
    Accessible.ignored: true // whatever it moves is reached without it

    contentItem: Rectangle {
        implicitWidth: Theme.scrollBarWidth - 2 * Theme.scrollBarMargin
        radius: width / 2
        color: bar.pressed || bar.hovered ? Theme.textDisabled : Theme.surfacePressed
    }
}
