import QtQuick
import Ostrelle

// One of the program's own symbols, drawn in one colour. It says nothing to a screen reader: what
// it stands for is told by the text or the control beside it.
Image {
    id: symbol

    required property string name
    property color color: Theme.textPrimary
    property int size: Theme.controlSize

    source: symbol.name === "" ? ""
        : "image://symbols/" + symbol.name + "/" + symbol.hex(symbol.color)
    sourceSize: Qt.size(symbol.size, symbol.size)
    width: symbol.size
    height: symbol.size
    fillMode: Image.PreserveAspectFit
    asynchronous: false
    Accessible.ignored: true

    // "AARRGGBB"; a QML colour that is opaque would print without its alpha.
    function hex(color: color): string {
        const channel = value => Math.round(value * 255).toString(16).padStart(2, "0");
        return channel(color.a) + channel(color.r) + channel(color.g) + channel(color.b);
    }
}
