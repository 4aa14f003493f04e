import QtQuick
import Ostrelle

// A hairline between two parts of a page.
Rectangle {
    implicitWidth: 1
    implicitHeight: 1
    color: Theme.hairline
}
