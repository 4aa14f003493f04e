import QtQuick
import Ostrelle

// What the user is to do next, or to know.
Label {
    secondary: true
    font.pixelSize: Theme.smallSize
    wrapMode: Text.Wrap
}
